#pragma once

#include <string>
#include <vector>

#include "host/feed/nxFeedError.h"
#include "host/market/nxBarTerms.h"
#include "host/market/nxProductDescription.h"

// Reads a file of product descriptions, in TOML:
//
//     [[product]]
//     name = "ESZ3"          # the name in the recorded data; the one key that is needed
//     tickSize = 0.25        # numbers may stand as text, too: "0.25"
//     lotSize = 1
//     pointValue = 50
//     currency = "USD"
//     exchange = "CME"
//     description = "E-mini S&P 500, December 2013"
//     tradingHours = "Sun-Thu 17:00-16:00"
//     zone = "America/Chicago"
//     holidays = [2013-12-25]
//     shortDays = [{ date = 2013-12-24, close = "12:15" }]
//     calendar = "CME"       # in place of these four, which then stand in a table [calendar.CME]
//     makerFee = 0.25
//     takerFee = 0.25
//
//     priceOffset = 0.5      # of a strategy, whose legs are described, too
//
//     [[product.legs]]       # once for each leg; `product.leg` is the same
//     product = "ESH4"
//     side = "BUY"           # or "SELL"
//     priceRatio = 1
//     tradeRatio = 1
//
//     [bars]                 # periods that scripts may ask for, of any product
//     "4_HOUR" = "4 hours"
//
// A number written as a float counts as its shortest text, so 0.01 is exactly that. A key of another name, a
// value of another type, a name given twice, and legs that make no sense are refused.
class nxProductFile
{
public:
    // Appends to `products`, and adds to `bars`, null where they are of no interest. False: `error` tells why
    // and where, and both are left alone.
    [[nodiscard]] static bool Read(const std::string& path, std::vector<nxProductDescription>& products,
                                   nxFeedError& error, nxNamedBars* bars = nullptr);
};
