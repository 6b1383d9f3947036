#pragma once

#include "base/records/nxPrice.h"
#include "host/feed/nxSide.h"

// The best price of one side of a market, direct or implied, and its volume. Null where there is none.
struct nxBestQuote
{
    nxDecimal price;
    nxVolume volume;

    nxBestQuote() = default;
    nxBestQuote(const nxPrice& market, nxSide side)
    {
        if (side == nxSide::Buy) {
            market.GetBestBidPriceAndVolume(price, volume);
        } else {
            market.GetBestAskPriceAndVolume(price, volume);
        }
    }

    bool operator==(const nxBestQuote&) const = default;
};
