#include "host/exchange/nxPriceDistance.h"

#include <algorithm>
#include <limits>

namespace {

nxDecimal GetFarthest(bool isPositive)
{
    constexpr long long most = std::numeric_limits<long long>::max();
    return nxDecimal::FromMantissa(isPositive ? most : -most, 0);
}

nxDecimal GetRounded(nxDecimal number, unsigned char places)
{
    if (number.GetDecimalPlaces() > places)
        number.Round(nxDecimal::FromMantissa(1, places), nxRoundingMethod_Nearest);
    return number;
}

}  // namespace

nxDecimal nxGetDistance(const nxDecimal& tick, unsigned int count)
{
    nxDecimal unit = tick;
    long long mantissa = 0;
    const auto overflows = [&] {
        return __builtin_mul_overflow(unit.GetMantissa(), static_cast<long long>(count), &mantissa);
    };
    if (!tick.IsValid()) return {};
    if (overflows()) unit.Normalise(0);
    if (overflows()) return GetFarthest(tick > nxDecimalZero);
    return nxDecimal::FromMantissa(mantissa, unit.GetDecimalPlaces());
}

nxDecimal nxGetPriceBeyond(nxSide side, const nxDecimal& price, const nxDecimal& distance)
{
    const nxDecimal change = side == nxSide::Buy ? distance : -distance;
    const nxDecimal moved = price + change;
    if (moved.IsValid() || !price.IsValid() || !distance.IsValid()) [[likely]]
        return moved;
    // With fewer places, as long as that helps.
    for (unsigned char places = std::max(price.GetDecimalPlaces(), distance.GetDecimalPlaces()); places != 0;)
    {
        --places;
        const nxDecimal rounded = GetRounded(price, places) + GetRounded(change, places);
        if (rounded.IsValid()) return rounded;
    }
    return GetFarthest(change > nxDecimalZero);
}
