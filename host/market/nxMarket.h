#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/time/nxTime.h"
#include "host/market/nxImpliedQuote.h"
#include "host/market/nxMarketProduct.h"
#include "host/market/nxProductDescription.h"

// One product of a run: what its market shows now, what is known of it, and when it trades. Owned by
// nxMarkets, where it stays for the run; changed on the run's thread between callbacks only.
struct nxMarket
{
    nxMarket(unsigned int number, const std::string& name, const nxDecimal& tick)
        : index(number), product(name), tickSize(tick)
    {
    }

    const unsigned int index;  // in the feed's table of products and in nxMarkets
    nxMarketProduct product;   // as the scripts see it
    // As the venue has it where rows reach the scripts later; null: as they see it.
    std::unique_ptr<nxMarketProduct> ahead;
    nxProductDescription description;  // as the run began with it; without a name where there is none
    nxDecimal tickSize;
    long long nextState = nxTime::Never;  // when its trading hours change its state
    bool isFresh = true;                  // nothing of its data has come since it opened
    nxStrategyTerms terms;                // of a strategy
    std::vector<nxMarket*> strategies;    // over it, at any depth, each after its legs

    const nxMarketProduct& GetAtVenue() const { return ahead ? *ahead : product; }
    const nxTradingHours& GetHours() const { return description.tradingHours; }
    // Without hours a product is open from its first row on, a strategy while all its legs are.
    bool OpensWithData() const { return GetHours().IsEmpty() && !product.IsStrategy(); }
};
