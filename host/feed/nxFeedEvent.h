#pragma once

#include <span>
#include <type_traits>

#include "base/enums/nxBuySellEnum.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "host/feed/nxFeedFormat.h"
#include "host/feed/nxSide.h"

// Best prices and a trade, as one row gives them. What the row leaves out is at no-change. A trade is a row
// with `last` or `lastVolume`; its side is undefined when the row does not tell it.
struct nxFeedQuote
{
    nxDecimal bid, ask, last;
    nxVolume bidVolume, askVolume, lastVolume;
    unsigned int side = nxEnum_Undefined;  // of nxBuySellEnum; no-change in a row without a trade

    [[nodiscard]] bool IsTrade() const { return last.IsValid() || lastVolume.IsValid(); }
};

struct nxFeedBar
{
    nxDecimal open, high, low, close;
    nxVolume volume;
};

// The new volume of one price level; 0: the level is gone.
struct nxFeedLevel
{
    nxDecimal price;
    nxVolume volume;
    nxSide side = nxSide::Sell;
};

// What happened at one moment to one product. Belongs to the reader that gives it and is good until that
// reader's next step. Volumes are whole lots.
struct nxFeedEvent
{
    long long time = 0;        // nanoseconds since 1970-01-01 UTC
    unsigned int product = 0;  // index into the feed's nxFeedProductTable
    nxFeedKind kind = nxFeedKind::Quote;
    unsigned int file = 0;        // index in the order the files were named
    unsigned int rows = 1;        // rows behind this event: more than one only for depth
    unsigned long long line = 0;  // of the first of them, 1-based

    union {  // as `kind` tells
        nxFeedQuote quote;
        nxFeedBar bar;
        std::span<const nxFeedLevel> levels;  // one change of the book, in the order of the rows
    };

    nxFeedEvent() : quote() {}
};
static_assert(std::is_trivially_copyable_v<nxFeedEvent>);  // they are copied by the million
