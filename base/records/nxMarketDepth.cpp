#include "base/records/nxMarketDepth.h"

#include <utility>

nxMarketDepth& nxMarketDepth::operator=(const nxMarketDepth& other)
{
    _bids = other._bids;
    _asks = other._asks;
    return *this;
}

void nxMarketDepth::Clear()
{
    _Clear(_bids);
    _Clear(_asks);
}

void nxMarketDepth::_Clear(Map& side)
{
    while (!side.empty())
        _spareNodes.push_back(side.extract(side.begin()));
}

void nxMarketDepth::_Set(Map& side, const nxDecimal& price, const nxVolume& volume)
{
    if (!price.IsValid() || !volume.IsValid()) return;
    const auto at = side.lower_bound(price);
    const bool exists = at != side.end() && at->first == price;
    if (volume.GetValue() == 0) {
        if (exists) _spareNodes.push_back(side.extract(at));
        return;
    }
    const nxMarketDepthMapEntry entry{.volume = volume.GetValue()};
    if (exists)
        at->second = entry;
    else if (_spareNodes.empty())
        side.emplace_hint(at, price, entry);
    else {
        Map::node_type node = std::move(_spareNodes.back());
        _spareNodes.pop_back();
        node.key() = price;
        node.mapped() = entry;
        side.insert(at, std::move(node));
    }
}
