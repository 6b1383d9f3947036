#include "scriptFramework/market/nxAlgoPriceTradeVolumesObject.h"

#include <iterator>

#include "base/enums/nxRoundingMethodEnum.h"

using Self = nxAlgoPriceTradeVolumesObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"getVolumeAtPrice", &Self::getVolumeAtPrice},
    {"getPriceVolumeAtIndex", &Self::getPriceVolumeAtIndex},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"count", &Self::Get_count, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoPriceTradeVolumesObject::nxAlgoPriceTradeVolumesObject(nxAlgoJobInterface* job, unsigned int id)
    : nxAlgoObject(job), _id(id)
{
    _tickSize.SetNull();
}

bool nxAlgoPriceTradeVolumesObject::getVolumeAtPrice(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail("priceTradeVolumes:getVolumeAtPrice requires one argument [price]");
    const double number = parameters.Parameter(1).GetNumber();
    nxDecimal price;
    if (_tickSize.IsValid()) {
        price.SetFromDouble(number, _tickSize.GetDecimalPlaces());
        price.Round(_tickSize, nxRoundingMethodEnum(nxRoundingMethod_Nearest));
    } else {
        // Ten places leave no room for a price of a billion, which then gets as many as it can have.
        for (int places = 10; !price.IsValid() && places >= 0; --places)
            price.SetFromDouble(number, static_cast<unsigned char>(places));
        price.Normalise(0);
    }
    results.Add(_priceTradeVolumes.GetTradeVolume(price));
    return true;
}

bool nxAlgoPriceTradeVolumesObject::getPriceVolumeAtIndex(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail("priceTradeVolumes:getPriceVolumeAtIndex requires one argument [index]");
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    const auto& prices = _priceTradeVolumes.GetPriceMap();
    if (index == 0 || index > prices.size()) {
        results.AddNull();
        results.AddNull();
        return true;
    }
    const auto& [price, volume] = *std::next(prices.begin(), index - 1);
    results.Add(price);
    results.Add(volume);
    return true;
}

bool nxAlgoPriceTradeVolumesObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

bool nxAlgoPriceTradeVolumesObject::Get_count(nxLuaResults& results)
{
    results.Add(static_cast<double>(_priceTradeVolumes.GetPriceMap().size()));
    return true;
}
