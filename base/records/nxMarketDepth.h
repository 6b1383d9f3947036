#pragma once

#include <map>
#include <vector>

#include "base/records/nxMarketDepthMapEntry.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

// One product's book by price. A value; copies have the levels only. The record keeps the nodes of levels
// that went away and uses them for new ones, so that a book which has reached its size allocates no more. Not
// safe to change on one thread while another reads.
class nxMarketDepth
{
public:
    using Map = std::map<nxDecimal, nxMarketDepthMapEntry>;

    nxMarketDepth() = default;
    nxMarketDepth(const nxMarketDepth& other) : _bids(other._bids), _asks(other._asks) {}
    nxMarketDepth& operator=(const nxMarketDepth& other);
    ~nxMarketDepth() = default;

    // Both ascend by price: the best bid is the last of its map, the best ask the first.
    const Map& GetBidMap() const { return _bids; }
    const Map& GetAskMap() const { return _asks; }

    // Sets the level's volume; 0 removes the level. Left alone by a price or volume that is not valid.
    void SetBid(const nxDecimal& price, const nxVolume& volume) { _Set(_bids, price, volume); }
    void SetAsk(const nxDecimal& price, const nxVolume& volume) { _Set(_asks, price, volume); }
    void Clear();

private:
    void _Set(Map& side, const nxDecimal& price, const nxVolume& volume);
    void _Clear(Map& side);

    Map _bids;
    Map _asks;
    std::vector<Map::node_type> _spareNodes;
};
