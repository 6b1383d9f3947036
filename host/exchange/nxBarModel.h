#pragma once

#include <span>
#include <string_view>

#include "host/feed/nxFeedEvent.h"

// At what price of a bar an order is filled that takes it as it comes, where the bar does not tell. What
// rests at a price is filled there under each model. A row of the table of bar models; rows live as long as
// the process.
struct nxBarModel
{
    const char* name;  // as --bar-fills takes it
    const char* help;  // in a few words
    // met: where the bar met the order, its open or the price of a stop within its range. The tick may be
    // null.
    nxDecimal (*findPrice)(const nxFeedBar& bar, nxSide side, const nxDecimal& tick, const nxDecimal& met);

    // The default first.
    static std::span<const nxBarModel> GetAll();
    static const nxBarModel& GetDefault() { return GetAll().front(); }
    // Null for an unknown name.
    static const nxBarModel* Find(std::string_view name);
};

// A bar model, and what fills a limit that rests.
struct nxBarRule
{
    const nxBarModel* model = &nxBarModel::GetDefault();
    bool isThrough = false;  // the range must go beyond its price; else touching it is enough
};

// The bar's end that is farthest up for a buy, farthest down for a sell.
inline const nxDecimal& nxGetFarEnd(const nxFeedBar& bar, nxSide side)
{
    return side == nxSide::Buy ? bar.high : bar.low;
}
