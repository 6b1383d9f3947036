#pragma once

#include <map>
#include <vector>

#include "host/feed/nxSide.h"

// A limit order book that holds orders as plain counts of lots, for the market generator. Prices are whole
// ticks. At a price the oldest order stands first. A value; one thread at a time.
class nxSyntheticBook
{
public:
    struct Level
    {
        std::vector<unsigned int> orders;  // lots of each, the oldest first
        unsigned long long volume = 0;
    };
    // Keyed by the price for asks and by its negative for bids, so that the best price is the first.
    using Levels = std::map<long long, Level>;

    // A change that an operation made, in the order it was made.
    struct Change
    {
        nxSide side;
        long long price;
        unsigned long long volume;  // of the level afterwards; 0: it is gone
        unsigned int traded;        // lots that were traded there
    };

    // The price is below the best ask, or above the best bid for an ask.
    void Add(nxSide side, long long price, unsigned int lots, std::vector<Change>& changes);

    // Trades against the best orders of the side, level by level; it keeps one lot at least. Returns the lots
    // traded.
    unsigned long long Take(nxSide side, unsigned int lots, std::vector<Change>& changes);

    // Withdraws one order. Returns its lots; 0: it is the last one of its side and stays.
    unsigned int Cancel(nxSide side, long long price, std::size_t order, std::vector<Change>& changes);

    [[nodiscard]] long long GetBest(nxSide side) const;
    [[nodiscard]] unsigned long long GetBestVolume(nxSide side) const
    {
        return GetLevels(side).begin()->second.volume;
    }
    [[nodiscard]] unsigned long long GetVolume(nxSide side) const { return _volumes[side]; }
    [[nodiscard]] const Levels& GetLevels(nxSide side) const { return _levels[side]; }

private:
    static long long _GetKey(nxSide side, long long price) { return -nxGetSigned(side, price); }

    nxBySide<Levels> _levels;
    nxBySide<unsigned long long> _volumes;
};
