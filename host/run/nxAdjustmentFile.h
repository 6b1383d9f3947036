#pragma once

#include <string>
#include <vector>

#include "host/feed/nxFeedError.h"
#include "host/market/nxAdjustment.h"

// A file of adjustments: CSV with the columns time, product, kind and value, its rows in any order; plain,
// .gz or .zst. Static functions only; any thread.
class nxAdjustmentFile
{
public:
    // Appends them. False: error tells why and where.
    [[nodiscard]] static bool Read(const std::string& path, std::vector<nxAdjustment>& adjustments,
                                   nxFeedError& error);
};
