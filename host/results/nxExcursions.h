#pragma once

#include <deque>
#include <optional>

#include "base/values/nxDecimal.h"

// The farthest price of one direction that was seen since each of a queue of lots was opened, in constant
// time for each price: only prices that no later one went beyond are kept. A value.
class nxExcursions
{
public:
    explicit nxExcursions(bool isHighest) : _isHighest(isHighest) {}

    // While that lot was the latest.
    void See(unsigned long long lot, const nxDecimal& price)
    {
        while (!_prices.empty() && !_IsBeyond(_prices.back().price, price))
            _prices.pop_back();
        // A lot whose own farthest price stays needs no second one.
        if (_prices.empty() || _prices.back().lot != lot) _prices.push_back({lot, price});
    }
    // Since that lot was opened; those before it are not asked for again. Null where no price was seen.
    nxDecimal GetSince(unsigned long long lot)
    {
        while (!_prices.empty() && _prices.front().lot < lot)
            _prices.pop_front();
        return _prices.empty() ? nxDecimal() : _prices.front().price;
    }
    void Clear() { _prices.clear(); }

private:
    struct Seen
    {
        unsigned long long lot;
        nxDecimal price;
    };

    bool _IsBeyond(const nxDecimal& price, const nxDecimal& other) const
    {
        return _isHighest ? price > other : price < other;
    }

    bool _isHighest;
    std::deque<Seen> _prices;  // each beyond those after it
};
