#pragma once

#include <span>

#include "host/results/nxSplitMix.h"

// Draws days for the stationary bootstrap (D. N. Politis and J. P. Romano, "The Stationary Bootstrap", 1994):
// blocks of days that follow each other, after the last the first, whose lengths are geometric with the cube
// root of the number of days as their mean. One thread at a time.
class nxStationaryResampler
{
public:
    // At least one day.
    nxStationaryResampler(std::size_t days, unsigned long long seed)
        : _days(days), _chanceOfNewBlock(1.0 / static_cast<double>(GetBlockLength(days))), _random(seed)
    {
    }

    // A place below the number of days for each of `places`.
    void Draw(std::span<std::size_t> places)
    {
        std::size_t place = _random.GetBelow(_days);
        for (std::size_t& drawn : places) {
            drawn = place;
            place = _random.GetNext() < _chanceOfNewBlock ? _random.GetBelow(_days) : (place + 1) % _days;
        }
    }

    // The cube root rounded to the nearest, in integers.
    static std::size_t GetBlockLength(std::size_t days)
    {
        std::size_t length = 1;
        while ((2 * length + 1) * (2 * length + 1) * (2 * length + 1) <= 8 * days)
            ++length;
        return length;
    }

private:
    std::size_t _days;
    double _chanceOfNewBlock;
    nxSplitMix _random;
};
