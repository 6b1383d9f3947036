#pragma once

#include <map>
#include <vector>

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
    using Side = std::map<long long, Level>;

    // A change that an operation made, in the order it was made.
    struct Change
    {
        bool isBid;
        long long price;
        unsigned long long volume;  // of the level afterwards; 0: it is gone
        unsigned int traded;        // lots that were traded there
    };

    // The price is below the best ask, or above the best bid for an ask.
    void Add(bool isBid, long long price, unsigned int lots, std::vector<Change>& changes);

    // Trades against the best orders, level by level; the side keeps one lot at least. Returns the lots
    // traded.
    unsigned long long Take(bool fromBids, unsigned int lots, std::vector<Change>& changes);

    // Withdraws one order. Returns its lots; 0: it is the last one of its side and stays.
    unsigned int Cancel(bool isBid, long long price, std::size_t order, std::vector<Change>& changes);

    [[nodiscard]] long long GetBest(bool isBid) const;
    [[nodiscard]] unsigned long long GetBestVolume(bool isBid) const
    {
        return GetSide(isBid).begin()->second.volume;
    }
    [[nodiscard]] unsigned long long GetVolume(bool isBid) const { return _volumes[isBid ? 1 : 0]; }
    [[nodiscard]] const Side& GetSide(bool isBid) const { return _sides[isBid ? 1 : 0]; }

private:
    static long long _GetKey(bool isBid, long long price) { return isBid ? -price : price; }

    Side _sides[2];  // asks, bids
    unsigned long long _volumes[2] = {0, 0};
};
