#include "host/exchange/nxShownMarket.h"

#include <cassert>

nxDecimal nxShownMarket::GetBestPrice(nxSide side) const
{
    nxDecimal best;
    ForEach(side, [&](const nxDecimal& price, unsigned int) {
        best = price;
        return false;
    });
    return best;
}

nxVolume nxShownMarket::GetVolume(nxSide side, const nxDecimal& price) const
{
    if (_usesDepth) {
        const nxMarketDepth::Map& levels = _market.GetLevels(side);
        const auto level = levels.find(price);
        return level == levels.end() ? 0u : level->second.volume;
    }
    const nxBestQuote best = _market.GetBest(side);
    if (!best.price.IsValid()) return {};
    if (price == best.price) return best.volume.IsValid() ? best.volume : nxVolume();
    // Better than the best: nobody else is there.
    return nxIsBetter(side, price, best.price) ? nxVolume(0u) : nxVolume();
}

unsigned int nxShownMarket::GetFree(nxSide side, const nxDecimal& price, unsigned int shown) const
{
    const auto taken = _taken[side].find(price);
    return taken == _taken[side].end() || taken->second.shown != shown ? shown : shown - taken->second.volume;
}

void nxShownMarket::Take(nxSide side, const nxDecimal& price, unsigned int shown, unsigned int volume)
{
    if (shown == Unlimited || volume == 0) return;
    Taken& taken = _taken[side][price];
    if (taken.shown != shown) taken = {shown, 0};
    taken.volume += volume;
    assert(taken.volume <= shown);
}

void nxShownMarket::TakeLevel(nxSide side, const nxDecimal& price, unsigned int volume)
{
    auto& taken = _taken[side];
    const auto entry = taken.find(price);
    if (entry != taken.end() && entry->second.shown != volume) taken.erase(entry);
}

bool nxShownMarket::TakeBest(nxSide side)
{
    const nxBestQuote now = _market.GetBest(side);
    if (now == _best[side]) return false;
    _best[side] = now;
    _taken[side].clear();
    return true;
}

void nxShownMarket::Join()
{
    _usesDepth = !_market.GetDepth().GetBidMap().empty() || !_market.GetDepth().GetAskMap().empty();
    for (const nxSide side : nxSides)
        if (!_usesDepth) _best[side] = _market.GetBest(side);
}

void nxShownMarket::Forget()
{
    for (const nxSide side : nxSides) {
        _best[side] = {};
        _taken[side].clear();
    }
}
