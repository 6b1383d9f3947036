#pragma once

#include <algorithm>
#include <vector>

#include "base/values/nxDecimal.h"
#include "host/feed/nxSide.h"

// What is assumed to stand behind the best price of a side whose data show no more: a level each tick, with
// as many lots as the best price has had on the average. What is taken of a level stays taken until another
// price is the best.
class nxAssumedBook
{
public:
    // Orders that want more than this wait for what is shown next.
    static constexpr unsigned int MostLevels = 1000;

    // fn(price, free) from the first level behind the best price on until it answers false. size: of a level.
    template <class Visit>
    void ForEach(nxSide side, const nxDecimal& best, const nxDecimal& tick, unsigned int size, Visit visit);
    // Of the level that is visited right now.
    void Take(unsigned int volume) { _taken[_level] += volume; }
    // The market has traded at that price, so that nothing stands there or at a better one.
    void NoteTraded(nxSide side, const nxDecimal& price)
    {
        if (!_traded.IsValid() || nxIsBetter(side, _traded, price)) _traded = price;
    }
    // The data have shown the best price anew.
    void ForgetTraded() { _traded = {}; }
    // Another price is the best.
    void Forget()
    {
        _taken.clear();
        ForgetTraded();
    }

private:
    std::vector<unsigned int> _taken;  // by level
    std::size_t _level = 0;
    nxDecimal _traded;  // the farthest; null: none
};

template <class Visit>
void nxAssumedBook::ForEach(nxSide side, const nxDecimal& best, const nxDecimal& tick, unsigned int size,
                            Visit visit)
{
    nxDecimal price = best;
    for (_level = 0; _level < MostLevels; ++_level) {
        price = side == nxSide::Buy ? price - tick : price + tick;
        // Null beyond the range of prices.
        if (price <= nxDecimalZero) return;
        if (_level == _taken.size()) _taken.push_back(0);
        if (_traded.IsValid() && !nxIsBetter(side, _traded, price)) continue;
        if (!visit(price, size - std::min(size, _taken[_level]))) return;
    }
}
