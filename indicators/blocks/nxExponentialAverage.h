#pragma once

#include <cmath>

#include "indicators/blocks/nxNoResult.h"

// An average in which a value's weight fades from bar to bar by a constant factor; it starts with the mean of
// the first `period` values.
class nxExponentialAverage
{
public:
    // The newest value weighs 2 / (period + 1).
    explicit nxExponentialAverage(unsigned int period) : nxExponentialAverage(period, 2.0 / (period + 1.0)) {}
    // Wilder's: the newest value weighs 1 / period.
    static nxExponentialAverage Wilder(unsigned int period) { return {period, 1.0 / period}; }

    double Push(double value)
    {
        if (std::isnan(value)) return nxNoResult;
        if (_count == _period) return _average += _weight * (value - _average);
        // Up to here `_average` holds the sum.
        _average += value;
        if (++_count < _period) return nxNoResult;
        return _average /= _period;
    }

private:
    nxExponentialAverage(unsigned int period, double weight) : _period(period), _weight(weight) {}

    unsigned int _period;
    unsigned int _count = 0;
    double _weight;
    double _average = 0;
};
