#include "host/exchange/nxShownMarket.h"

#include <algorithm>

nxDecimal nxShownMarket::GetBestPrice(nxSide side) const
{
    nxDecimal best;
    _ForEachShown(side, [&](const nxDecimal& price, unsigned int) {
        best = price;
        return false;
    });
    return best;
}

nxVolume nxShownMarket::GetVolume(nxSide side, const nxDecimal& price) const
{
    nxVolume shown;
    if (_usesDepth) {
        shown = _market.GetLevels(side).GetVolume(price);
    } else {
        const nxBestQuote best = _market.GetBest(side);
        if (!best.price.IsValid()) return {};
        // Better than the best: nobody else is there.
        if (nxIsBetter(side, price, best.price)) return nxVolume(0u);
        if (price != best.price || !best.volume.IsValid()) return {};
        shown = best.volume;
    }
    const auto gone = _gone[side].find(price);
    if (gone == _gone[side].end()) return shown;
    return shown.GetValue() - std::min(shown.GetValue(), gone->second.traded);
}

void nxShownMarket::Take(nxSide side, const nxDecimal& price, unsigned int volume)
{
    if (volume != 0) _gone[side][price].taken += volume;
}

void nxShownMarket::TakeTraded(nxSide side, const nxDecimal& price, const nxVolume& volume)
{
    nxDecimal& passed = _passed[side];
    if (passed.IsValid() && nxIsBetter(side, price, passed)) return;
    bool isPassed = _usesDepth;
    const auto take = [&](const nxDecimal& level, unsigned int shown) {
        const bool isThrough = nxIsBetter(side, level, price);
        if (shown == Unlimited) isPassed = false;
        if (shown == Unlimited || (!isThrough && level != price)) return false;
        const unsigned int traded = isThrough ? shown : volume.IsValid() ? volume.GetValue() : 0;
        if (isThrough && !_usesDepth) _assumed[side].NoteTraded(side, price);
        if (traded == 0) return isThrough;
        unsigned int& sum = _gone[side][level].traded;
        sum += std::min(traded, shown - std::min(shown, sum));
        return isThrough;
    };
    _ForEachShown(side, take, passed);
    if (isPassed) passed = price;
}

void nxShownMarket::_Show(Levels& levels, Levels::iterator level, unsigned int volume)
{
    level->second.traded = 0;
    level->second.taken = std::min(level->second.taken, volume);
    if (level->second.taken == 0) levels.erase(level);
}

void nxShownMarket::ShowLevel(nxSide side, const nxDecimal& price, unsigned int volume)
{
    nxDecimal& passed = _passed[side];
    if (passed.IsValid() && nxIsBetter(side, price, passed)) passed = price;
    Levels& gone = _gone[side];
    // Most levels that the data name lie outside of the few that something was taken of.
    if (gone.empty() || price < gone.begin()->first || gone.rbegin()->first < price) return;
    const auto level = gone.find(price);
    if (level != gone.end()) _Show(gone, level, volume);
}

bool nxShownMarket::ShowBest(nxSide side, bool isGiven)
{
    const nxBestQuote now = _market.GetBest(side);
    const nxBestQuote before = std::exchange(_best[side], now);
    const bool changed = now != before;
    if (changed || isGiven) _assumed[side].ForgetTraded();
    Levels& gone = _gone[side];
    if (now.price != before.price || !now.volume.IsValid()) {
        gone.clear();
        _assumed[side].Forget();
    } else if (changed || isGiven) {
        if (const auto level = gone.find(now.price); level != gone.end())
            _Show(gone, level, now.volume.GetValue());
    }
    return changed;
}

void nxShownMarket::Join()
{
    _usesDepth = _market.HasDepth();
    for (const nxSide side : nxSides)
        if (!_usesDepth) _best[side] = _market.GetBest(side);
}

void nxShownMarket::Forget()
{
    for (const nxSide side : nxSides) {
        _best[side] = _market.GetBest(side);
        _gone[side].clear();
        _passed[side] = {};
        _assumed[side].Forget();
    }
}
