#pragma once

#include <limits>
#include <utility>

#include "host/exchange/nxBarModel.h"
#include "host/exchange/nxBookListener.h"
#include "host/exchange/nxOwnOrders.h"
#include "host/feed/nxFeedEvent.h"

// Fills the orders of a product by its recorded bars, which tell nothing of a book or a queue: at prices that
// the bar must have had. A bar spans one period up to its end. An order that was there at its begin meets its
// open, then its range; one that came later meets what is known to be later still, the close alone.
// docs/exchange.md tells the rules.
class nxBarMatcher
{
public:
    // Both outlive it.
    nxBarMatcher(nxOwnOrders& orders, nxBookListener& listener, const nxBarRule& rule)
        : _orders(orders), _listener(listener), _rule(rule)
    {
    }

    // 0: any volume fills; else this share of a bar's volume, in hundredths, rounded down.
    void SetParticipation(unsigned int hundredths) { _participation = hundredths; }
    // Nanoseconds from a bar's begin to its end; 0 where that is not known, and a bar begins with the end of
    // the one before.
    void SetPeriod(long long period) { _period = period; }
    // Orders that came at the bar's end or later do not meet it. The tick size is that of now, or null.
    // `rest` takes stops that were triggered and have volume left.
    template <class Rest>
    void Match(const nxFeedBar& bar, const nxDecimal& tickSize, long long time, Rest rest)
    {
        _tick = tickSize;
        _Match(bar, time);
        for (nxExchangeOrder* order : std::exchange(_triggered, {}))
            rest(*order);
    }

private:
    void _Match(const nxFeedBar& bar, long long time);
    // Fills the orders that came from one time on and before another.
    void _Match(const nxFeedBar& bar, long long from, long long until, unsigned int& budget);
    nxDecimal _FindStop(nxExchangeOrder& order, const nxFeedBar& bar) const;
    bool _IsReached(const nxExchangeOrder& order, const nxDecimal& price) const;
    nxDecimal _FindPrice(const nxExchangeOrder& order, const nxFeedBar& bar, const nxDecimal& met) const;
    bool _Fill(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget);
    unsigned int _GetBudget(const nxFeedBar& bar) const;

    nxOwnOrders& _orders;
    nxBookListener& _listener;
    const nxBarRule _rule;
    nxDecimal _tick;
    unsigned int _participation = 0;
    long long _period = 0;
    long long _lastEnd = std::numeric_limits<long long>::min();
    std::vector<nxExchangeOrder*> _triggered;  // by the bar, with volume left
};
