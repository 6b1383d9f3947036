#pragma once

#include "base/records/nxPrice.h"
#include "host/market/nxBestQuote.h"

// What a market's price is taken for where no side is meant: the mid of the best bid and ask, the last price
// where one of them is missing. Null for none of them.
inline nxDecimal nxGetMidPrice(const nxPrice& price)
{
    const nxDecimal sum = nxBestQuote(price, nxSide::Buy).price + nxBestQuote(price, nxSide::Sell).price;
    const nxDecimal mid(sum.GetMantissa(), 2, 1);
    if (sum.IsValid() && mid.IsValid()) {
        // Half of the mantissa has one place more than the sum.
        const auto places = static_cast<unsigned char>(sum.GetDecimalPlaces() + mid.GetDecimalPlaces());
        const nxDecimal scaled = nxDecimal::FromMantissa(mid.GetMantissa(), places);
        if (scaled.IsValid()) return scaled;
    }
    return price.GetLastPrice().IsValid() ? price.GetLastPrice() : nxDecimal();
}
