#pragma once

#include <array>
#include <string_view>

#include "base/values/nxDecimal.h"
#include "host/feed/nxFeedFormat.h"

enum class nxCsvSide : unsigned char { None, Buy, Sell };

// The cells of one row, read but not judged. Belongs to an nxCsvBlock and is used again for a later row; a
// column that the file lacks stays as it is made here: empty.
struct nxCsvRow
{
    long long time = 0;        // nanoseconds since 1970 UTC
    std::string_view product;  // into the block
    bool isProductNew = true;  // false: surely the name of the row before
    nxCsvSide side = nxCsvSide::None;
    bool isSnapshot = false;  // of a book that begins anew
    // With the places that were written. No change: an empty cell.
    std::array<nxDecimal, nxFeedSlot::Count> numbers = GetEmpty();
    unsigned long long line = 0;  // 1-based
    const char* text = nullptr;   // where the row begins in the block's text
    bool isBad = false;           // it cannot be read; the block's next refusal tells why

    static constexpr std::array<nxDecimal, nxFeedSlot::Count> GetEmpty()
    {
        std::array<nxDecimal, nxFeedSlot::Count> empty;
        empty.fill(nxNoChangeInitalizer());
        return empty;
    }
};
