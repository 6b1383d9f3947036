#pragma once

#include <algorithm>
#include <cmath>
#include <utility>

#include "indicators/blocks/nxNoResult.h"
#include "indicators/nxIndicatorBar.h"

// How far a bar's prices reach, the gap from the close before it included; the first bar has no such close
// and gives no result.
class nxTrueRange
{
public:
    double Push(const nxIndicatorBar& bar)
    {
        const double before = std::exchange(_close, bar.close);
        if (std::isnan(before)) return nxNoResult;
        return std::max(bar.high, before) - std::min(bar.low, before);
    }

private:
    double _close = nxNoResult;
};
