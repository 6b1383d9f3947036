#pragma once

#include "host/feed/nxSide.h"

// Distances between prices. What a decimal cannot hold stays at the end of its range, so that a stop or a
// limit that far away is one that the market never reaches.

// So many ticks.
nxDecimal nxGetDistance(const nxDecimal& tick, unsigned int count);

// The price at that distance above for a buy, below for a sell. Null where one of them is not valid.
nxDecimal nxGetPriceBeyond(nxSide side, const nxDecimal& price, const nxDecimal& distance);
