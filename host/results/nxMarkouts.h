#pragma once

#include <array>
#include <deque>

#include "host/results/nxResultData.h"

// The fills of one product that wait for the price of some time later. What the end of the data cuts off is
// not counted. A value; memory grows with the fills of the longest of these times.
class nxMarkouts
{
public:
    explicit nxMarkouts(const nxDecimal& pointValue) : _pointValue(pointValue) {}

    // data outlives it.
    void Add(nxResultData& data, nxSide side, const nxDecimal& price, unsigned int volume, long long time)
    {
        for (std::size_t i = 0; i < nxMarkout::Count; ++i)
            _waiting[i].push_back(
                {nxTime::GetLater(time, nxMarkout::Horizons[i]), &data, side, price, volume});
        _next = std::min(_next, _waiting.front().front().due);
    }
    // Before a price of that time is known; mid: the latest one, null for none.
    void Settle(long long time, const nxDecimal& mid)
    {
        if (_next < time) [[unlikely]]
            _Settle(time, mid);
    }
    bool IsEmpty() const { return _next == nxTime::Never; }

private:
    struct Waiting
    {
        long long due;
        nxResultData* data;
        nxSide side;
        nxDecimal price;
        unsigned int volume;
    };

    void _Settle(long long time, const nxDecimal& mid);

    nxDecimal _pointValue;
    std::array<std::deque<Waiting>, nxMarkout::Count> _waiting;  // each by time
    long long _next = nxTime::Never;
};
