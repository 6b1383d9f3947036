#pragma once

#include <vector>

#include "host/market/nxMarketProduct.h"

// What a strategy's price is made of.
struct nxStrategyTerms
{
    struct Leg
    {
        const nxMarketProduct* market = nullptr;  // outlives the terms
        nxSide side = nxSide::Buy;
        nxDecimal priceRatio = nxDecimalOne;  // above 0
        unsigned int tradeRatio = 1;          // lots in one lot of the strategy, above 0
        const nxMarketProduct* atVenue =
            nullptr;  // where the venue is ahead of the scripts; outlives them, too
    };

    std::vector<Leg> legs;
    nxDecimal priceOffset;  // null: none
    nxDecimal tickSize;     // of the strategy; null: prices stay as they come
};

// The quote of a strategy as the best prices of its legs, direct or implied, give it. Who buys the strategy
// buys the legs of the side BUY and sells the others, so
//
//     bid = sum of priceRatio * (BUY: the leg's bid; SELL: - its ask) + priceOffset
//
// and the ask the other way round. Exact, then rounded to the tick: a bid down, an ask up. The volume is the
// smallest of the legs' volumes / tradeRatio in whole lots, and null where a leg tells none. A side is null
// when a leg lacks it, has less than one lot of the strategy, or the price fits no decimal.
struct nxImpliedQuote
{
    nxImpliedQuote() = default;
    // atVenue: from what the venue has where it is ahead of the scripts.
    explicit nxImpliedQuote(const nxStrategyTerms& terms, bool atVenue = false);

    nxDecimal bid, ask;
    nxVolume bidVolume, askVolume;

    bool operator==(const nxImpliedQuote&) const = default;
};
