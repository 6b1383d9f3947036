#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "indicators/blocks/nxNoResult.h"
#include "indicators/blocks/nxRollingFold.h"

// The highest high and the lowest low of the last `period` bars.
class nxRollingRange
{
public:
    struct Range
    {
        double highest = -std::numeric_limits<double>::infinity();
        double lowest = std::numeric_limits<double>::infinity();

        friend Range operator+(const Range& a, const Range& b)
        {
            return {std::max(a.highest, b.highest), std::min(a.lowest, b.lowest)};
        }
        double GetMiddle() const { return (highest + lowest) / 2; }
        // Where in the range a value stands, from 0 at the lowest to 100 at the highest; the middle where the
        // range has no extent but that of rounding.
        double GetPlace(double value) const
        {
            const double extent = highest - lowest;
            return extent <= 1e-12 * std::abs(highest) ? 50 : 100 * (value - lowest) / extent;
        }
    };

    explicit nxRollingRange(unsigned int period) : _fold(period) {}

    Range Push(double high, double low)
    {
        if (std::isnan(high) || std::isnan(low)) return _none;
        const Range range = _fold.Push({high, low});
        return _fold.IsFull() ? range : _none;
    }

private:
    static constexpr Range _none{nxNoResult, nxNoResult};
    nxRollingFold<Range> _fold;
};
