#pragma once

// What stands at one price of a book.
struct nxMarketDepthMapEntry
{
    unsigned int volume = 0;
    unsigned int orderCount = 0;  // 0 where the source does not tell

    bool operator==(const nxMarketDepthMapEntry&) const = default;
};
