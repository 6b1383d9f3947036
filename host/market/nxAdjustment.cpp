#include "host/market/nxAdjustment.h"

#include "base/values/nxExactAmount.h"

nxDecimal nxAdjustment::GetPrice(const nxDecimal& price) const
{
    constexpr unsigned char places = 10;
    if (!price.IsValid()) return price;
    if (kind == nxAdjustmentKind::Roll) return price + value;
    if (kind != nxAdjustmentKind::Split) return price;
    nxDecimal adjusted = nxExactAmount(price, oldLots).GetShare(1, newLots, places).GetAsDecimal(places);
    adjusted.Normalise(price.GetDecimalPlaces());
    return adjusted;
}
