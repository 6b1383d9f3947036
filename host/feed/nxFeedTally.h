#pragma once

#include <vector>

#include "host/feed/nxFeedOverlaps.h"
#include "host/feed/nxFeedProduct.h"
#include "host/feed/nxFeedReader.h"

// What a person should hear of the rows of a feed, in numbers.
struct nxFeedTally
{
    std::vector<nxFeedReader::Tally> files;      // in the order they were named
    std::vector<nxFeedProduct::Tally> products;  // in the order of their table
    nxFeedOverlaps overlaps;
};
