#include "base/records/nxPrice.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace {

nxVolume Add(const nxVolume& a, const nxVolume& b)
{
    if (!a.IsValid() || !b.IsValid()) return a.IsValid() ? a : b;
    constexpr std::uint64_t greatest = nxVolume::NoChangeValue - 1;
    return static_cast<unsigned>(std::min(std::uint64_t{a.GetValue()} + b.GetValue(), greatest));
}

struct Quote
{
    const nxDecimal& price;
    const nxVolume& volume;
};

template <class Better>
void GetBest(const Quote& direct, const Quote& implied, Better better, nxDecimal& price, nxVolume& volume)
{
    const Quote* best = &direct;
    if (!direct.price.IsValid() || (implied.price.IsValid() && better(implied.price, direct.price)))
        best = &implied;
    const bool addsUp = direct.price.IsValid() && direct.price == implied.price;
    price = best->price.IsValid() ? best->price : nxDecimal();
    volume = !best->price.IsValid() ? nxVolume() : addsUp ? Add(direct.volume, implied.volume) : best->volume;
}

template <class Field>
void Apply(Field& field, const Field& update)
{
    if (!update.IsNoChange()) field = update;
}

}  // namespace

void nxPrice::_GetBestBidOfBoth(nxDecimal& price, nxVolume& volume) const
{
    GetBest({_bidPrice, _bidVolume}, {_impliedBidPrice, _impliedBidVolume}, std::greater<>(), price, volume);
}

void nxPrice::_GetBestAskOfBoth(nxDecimal& price, nxVolume& volume) const
{
    GetBest({_askPrice, _askVolume}, {_impliedAskPrice, _impliedAskVolume}, std::less<>(), price, volume);
}

void nxPrice::ApplyUpdate(const nxPrice& update)
{
    Apply(_bidPrice, update._bidPrice);
    Apply(_bidVolume, update._bidVolume);
    Apply(_askPrice, update._askPrice);
    Apply(_askVolume, update._askVolume);
    Apply(_impliedBidPrice, update._impliedBidPrice);
    Apply(_impliedBidVolume, update._impliedBidVolume);
    Apply(_impliedAskPrice, update._impliedAskPrice);
    Apply(_impliedAskVolume, update._impliedAskVolume);
    Apply(_lastPrice, update._lastPrice);
    Apply(_lastVolume, update._lastVolume);
    Apply(_lastPriceBuySellIndicator, update._lastPriceBuySellIndicator);
    Apply(_totalTradedVolume, update._totalTradedVolume);
    Apply(_openPrice, update._openPrice);
    Apply(_highPrice, update._highPrice);
    Apply(_lowPrice, update._lowPrice);
    Apply(_closePrice, update._closePrice);
    Apply(_previousClosePrice, update._previousClosePrice);
    Apply(_settlementPrice, update._settlementPrice);
    Apply(_previousSettlementPrice, update._previousSettlementPrice);
    Apply(_settlementPriceType, update._settlementPriceType);
    Apply(_theoreticalPrice, update._theoreticalPrice);
    Apply(_theoretical2Price, update._theoretical2Price);
}

void nxPrice::SetNoChange()
{
    _bidPrice.SetNoChange();
    _bidVolume.SetNoChange();
    _askPrice.SetNoChange();
    _askVolume.SetNoChange();
    _impliedBidPrice.SetNoChange();
    _impliedBidVolume.SetNoChange();
    _impliedAskPrice.SetNoChange();
    _impliedAskVolume.SetNoChange();
    _lastPrice.SetNoChange();
    _lastVolume.SetNoChange();
    _lastPriceBuySellIndicator.SetNoChange();
    _totalTradedVolume.SetNoChange();
    _openPrice.SetNoChange();
    _highPrice.SetNoChange();
    _lowPrice.SetNoChange();
    _closePrice.SetNoChange();
    _previousClosePrice.SetNoChange();
    _settlementPrice.SetNoChange();
    _previousSettlementPrice.SetNoChange();
    _settlementPriceType.SetNoChange();
    _theoreticalPrice.SetNoChange();
    _theoretical2Price.SetNoChange();
}
