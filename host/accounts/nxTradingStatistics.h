#pragma once

#include <vector>

#include "base/enums/nxCurrencyEnum.h"
#include "base/values/nxExactAmount.h"
#include "host/exchange/nxBookListener.h"

// What one job's orders came to. Everything is zero while it sends none.
struct nxTradingStatistics
{
    // By currency; products without one have the undefined one.
    struct Money
    {
        nxCurrencyEnum currency;
        nxExactAmount profit;  // of what is realised and what is open, less fees
        nxExactAmount open;
        nxExactAmount fees;
        nxExactAmount best;      // the highest that the profit was, from 0 on
        nxExactAmount drawdown;  // the farthest that it fell from its highest
        // The same, where bars are met at the worst of their high and low.
        nxExactAmount worstDrawdown;
        bool hasBars = false;  // what was open met a bar
        nxExactAmount cash;    // of funding, dividends and splits, in the profit
        nxExactAmount impact;  // of what was taken, in the profit
        nxExactAmount carry;   // what positions cost more after rolls, not in the profit
    };

    unsigned long long orders = 0;     // sent, with the children of brackets
    unsigned long long barOrders = 0;  // of these, in products of bars
    unsigned long long fills = 0;
    unsigned long long volume = 0;  // without what own orders traded with each other
    unsigned long long makerVolume = 0;
    unsigned long long assumedVolume = 0;  // filled in the book that is assumed behind the best price
    unsigned long long selfVolume = 0;     // that own orders traded with each other
    unsigned long long selfTrades = 0;     // ends and refusals because they would have
    unsigned long long withoutImpact = 0;  // fills as a taker whose impact is not known
    std::vector<Money> money;

    void AddFill(unsigned int lots, bool isMaker, nxFillCause cause)
    {
        ++fills;
        if (cause == nxFillCause::OwnOrder) {
            selfVolume += lots;
            return;
        }
        volume += lots;
        if (isMaker) makerVolume += lots;
        if (cause == nxFillCause::Assumed) assumedVolume += lots;
    }
    Money& operator[](const nxCurrencyEnum& currency)
    {
        for (Money& known : money)
            if (known.currency == currency) return known;
        return money.emplace_back(Money{currency, {}, {}, {}, {}, {}, {}, false, {}, {}, {}});
    }
};
