#pragma once

#include <cmath>
#include <span>

#include "indicators/blocks/nxNoResult.h"
#include "indicators/blocks/nxRollingFold.h"

// The mean of the last `period` values.
class nxRollingMean
{
public:
    explicit nxRollingMean(unsigned int period) : _fold(period), _period(period) {}

    double Push(double value)
    {
        if (std::isnan(value)) return nxNoResult;
        const double sum = _fold.Push(value);
        return _fold.IsFull() ? sum / _period : nxNoResult;
    }
    // The values behind the mean, in no order of time.
    std::span<const double> GetValues() const { return _fold.GetValues(); }

private:
    nxRollingFold<double> _fold;
    double _period;
};
