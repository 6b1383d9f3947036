#pragma once

#include "host/exchange/nxBookListener.h"
#include "host/exchange/nxOwnOrders.h"
#include "host/feed/nxFeedEvent.h"

// Fills the orders of a product by its recorded bars, which tell nothing of a book or a queue: at prices that
// the bar must have had, each order by a bar that is later than it. docs/exchange.md tells the rules.
class nxBarMatcher
{
public:
    // Both outlive it.
    nxBarMatcher(nxOwnOrders& orders, nxBookListener& listener) : _orders(orders), _listener(listener) {}

    // 0: any volume fills; else this share of a bar's volume, in hundredths, rounded down.
    void SetParticipation(unsigned int hundredths) { _participation = hundredths; }
    // Orders that came at the bar's time or later do not meet it: its open may be older than what they were
    // sent upon. `rest` takes stops that were triggered and have volume left.
    template <class Rest>
    void Match(const nxFeedBar& bar, long long time, Rest rest)
    {
        for (nxExchangeOrder* order : _Match(bar, time))
            rest(*order);
    }

private:
    std::vector<nxExchangeOrder*> _Match(const nxFeedBar& bar, long long time);
    nxDecimal _FindStop(nxExchangeOrder& order, const nxFeedBar& bar) const;
    bool _Fill(nxExchangeOrder& order, const nxFeedBar& bar, unsigned int& budget);
    unsigned int _GetBudget(const nxFeedBar& bar) const;

    nxOwnOrders& _orders;
    nxBookListener& _listener;
    unsigned int _participation = 0;
};
