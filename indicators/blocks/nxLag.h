#pragma once

#include <cmath>
#include <cstddef>
#include <memory>

#include "indicators/blocks/nxNoResult.h"

// The value of `bars` bars ago. A copy shares the ring with its original and may try values that are not
// final, as nxRollingFold's does: the ring has one place more than the lag, so that the newest value
// displaces none that is still asked for.
class nxLag
{
public:
    explicit nxLag(unsigned int bars)
        : _places(bars + std::size_t{1}), _ring(std::make_shared<double[]>(_places, nxNoResult))
    {
    }

    double Push(double value)
    {
        if (std::isnan(value)) return nxNoResult;
        _ring[_next] = value;
        _next = _next + 1 == _places ? 0 : _next + 1;
        return _ring[_next];
    }

private:
    std::size_t _places;
    std::size_t _next = 0;
    std::shared_ptr<double[]> _ring;
};
