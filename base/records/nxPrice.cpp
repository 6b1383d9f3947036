#include "base/records/nxPrice.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <tuple>

namespace {

nxVolume Add(const nxVolume& a, const nxVolume& b)
{
    if (!a.IsValid() || !b.IsValid()) return a.IsValid() ? a : b;
    constexpr std::uint64_t greatest = nxVolume::NoChangeValue - 1;
    return static_cast<unsigned int>(std::min(std::uint64_t{a.GetValue()} + b.GetValue(), greatest));
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

struct nxPrice::Fields
{
    static constexpr auto all = std::tuple(
        &nxPrice::_bidPrice, &nxPrice::_bidVolume, &nxPrice::_askPrice, &nxPrice::_askVolume,
        &nxPrice::_impliedBidPrice, &nxPrice::_impliedBidVolume, &nxPrice::_impliedAskPrice,
        &nxPrice::_impliedAskVolume, &nxPrice::_lastPrice, &nxPrice::_lastVolume,
        &nxPrice::_lastPriceBuySellIndicator, &nxPrice::_totalTradedVolume, &nxPrice::_openPrice,
        &nxPrice::_highPrice, &nxPrice::_lowPrice, &nxPrice::_closePrice, &nxPrice::_previousClosePrice,
        &nxPrice::_settlementPrice, &nxPrice::_previousSettlementPrice, &nxPrice::_settlementPriceType,
        &nxPrice::_theoreticalPrice, &nxPrice::_theoretical2Price);
};

void nxPrice::ApplyUpdate(const nxPrice& update)
{
    std::apply([&](auto... field) { (Apply(this->*field, update.*field), ...); }, Fields::all);
}

void nxPrice::SetNoChange()
{
    std::apply([&](auto... field) { ((this->*field).SetNoChange(), ...); }, Fields::all);
}
