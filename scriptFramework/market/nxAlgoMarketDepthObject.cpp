#include "scriptFramework/market/nxAlgoMarketDepthObject.h"

#include <cmath>
#include <functional>
#include <iterator>
#include <limits>

#include "base/enums/nxRoundingMethodEnum.h"
#include "base/records/nxMarketDepth.h"

using Self = nxAlgoMarketDepthObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"bid", &Self::bid},
    {"bidQty", &Self::bidQty},
    {"ask", &Self::ask},
    {"askQty", &Self::askQty},
    {"getBidVolumeAtPrice", &Self::getBidVolumeAtPrice},
    {"getAskVolumeAtPrice", &Self::getAskVolumeAtPrice},
    {"getBidPriceWithVolume", &Self::getBidPriceWithVolume},
    {"getAskPriceWithVolume", &Self::getAskPriceWithVolume},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"bidCount", &Self::Get_bidCount, nullptr},
    {"askCount", &Self::Get_askCount, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoMarketDepthObject::nxAlgoMarketDepthObject(nxAlgoJobInterface* job, unsigned int id)
    : nxAlgoMarketDepthObject(job, nullptr, id)
{
}

nxAlgoMarketDepthObject::nxAlgoMarketDepthObject(nxAlgoJobInterface* job, const nxMarketDepth* depth,
                                                 unsigned int id)
    : nxAlgoObject(job), _marketDepth(depth), _id(id)
{
}

// Null for a wrong count or a level that the side does not have.
const Self::Levels::value_type* nxAlgoMarketDepthObject::_FindLevel(nxLuaParameters& parameters,
                                                                    const Levels& levels)
{
    if (parameters.Count() != 1) return nullptr;
    const unsigned int level = parameters.Parameter(1).GetUnsigned();
    if (level >= levels.size()) return nullptr;
    // From the nearer end: the best bid is the last of its map.
    const auto fromEnd = static_cast<std::ptrdiff_t>(levels.size() - level);
    return fromEnd > level ? &*std::next(levels.begin(), level) : &*std::prev(levels.end(), fromEnd);
}

bool nxAlgoMarketDepthObject::bid(nxLuaParameters& parameters, nxLuaResults& results)
{
    const auto* level = _FindLevel(parameters, _marketDepth->GetBidMap());
    if (level == nullptr) return false;
    results.Add(level->first.GetAsDouble());
    return true;
}

bool nxAlgoMarketDepthObject::bidQty(nxLuaParameters& parameters, nxLuaResults& results)
{
    const auto* level = _FindLevel(parameters, _marketDepth->GetBidMap());
    if (level == nullptr) return false;
    results.Add(level->second.volume);
    return true;
}

bool nxAlgoMarketDepthObject::ask(nxLuaParameters& parameters, nxLuaResults& results)
{
    const auto* level = _FindLevel(parameters, _marketDepth->GetAskMap());
    if (level == nullptr) return false;
    results.Add(level->first.GetAsDouble());
    return true;
}

bool nxAlgoMarketDepthObject::askQty(nxLuaParameters& parameters, nxLuaResults& results)
{
    const auto* level = _FindLevel(parameters, _marketDepth->GetAskMap());
    if (level == nullptr) return false;
    results.Add(level->second.volume);
    return true;
}

// What no decimal can hold becomes the greatest one of its sign, so that it is beyond every level; NaN stays
// null.
nxDecimal nxAlgoMarketDepthObject::_ToPrice(double number) const
{
    nxDecimal price;
    price.SetFromDouble(number, 4);
    price.SetFromDouble(number, _priceManipulator.NumberOfDecimalPlaces(price));
    _priceManipulator.RoundToValidPrice(nxRoundingMethodEnum(nxRoundingMethod_Nearest), price);
    if (price.IsValid() || std::isnan(number)) return price;
    constexpr long long greatest = std::numeric_limits<long long>::max();
    return nxDecimal::FromMantissa(number < 0 ? -greatest : greatest, 0);
}

// Adds up the levels from `first` on, the best one, as long as they are no worse than the price.
template <class Level, class IsWithin>
bool nxAlgoMarketDepthObject::_GiveVolume(nxLuaParameters& parameters, nxLuaResults& results, Level first,
                                          Level last, IsWithin isWithin) const
{
    if (parameters.Count() != 1) return results.Fail("Invalid parameters. Requires price");
    const nxDecimal price = _ToPrice(parameters.Parameter(1).GetNumber());
    unsigned int volume = 0;
    for (; price.IsValid() && first != last && isWithin(first->first, price); ++first)
        volume += first->second.volume;
    results.Add(volume);
    return true;
}

bool nxAlgoMarketDepthObject::getBidVolumeAtPrice(nxLuaParameters& parameters, nxLuaResults& results)
{
    const Levels& bids = _marketDepth->GetBidMap();
    return _GiveVolume(parameters, results, bids.rbegin(), bids.rend(), std::greater_equal());
}

bool nxAlgoMarketDepthObject::getAskVolumeAtPrice(nxLuaParameters& parameters, nxLuaResults& results)
{
    const Levels& asks = _marketDepth->GetAskMap();
    return _GiveVolume(parameters, results, asks.begin(), asks.end(), std::less_equal());
}

bool nxAlgoMarketDepthObject::getBidPriceWithVolume(nxLuaParameters&, nxLuaResults&)
{
    return true;
}

bool nxAlgoMarketDepthObject::getAskPriceWithVolume(nxLuaParameters&, nxLuaResults&)
{
    return true;
}

bool nxAlgoMarketDepthObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

bool nxAlgoMarketDepthObject::Get_bidCount(nxLuaResults& results)
{
    results.Add(static_cast<double>(_marketDepth->GetBidMap().size()));
    return true;
}

bool nxAlgoMarketDepthObject::Get_askCount(nxLuaResults& results)
{
    results.Add(static_cast<double>(_marketDepth->GetAskMap().size()));
    return true;
}
