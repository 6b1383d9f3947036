#include "base/values/nxExactAmount.h"

#include <algorithm>

// Half away from zero.
nxExactAmount::Wide nxExactAmount::_Divide(Wide numerator, Wide denominator)
{
    const Wide quotient = numerator / denominator;
    const Wide rest = numerator % denominator;
    if ((rest < 0 ? -rest : rest) * 2 < (denominator < 0 ? -denominator : denominator)) return quotient;
    return (numerator < 0) == (denominator < 0) ? quotient + 1 : quotient - 1;
}

nxExactAmount::nxExactAmount(const nxDecimal& price, long long volume, const nxDecimal& factor)
{
    if (!price.IsValid()) return;
    _mantissa = Wide(price.GetMantissa()) * volume;
    _places = price.GetDecimalPlaces();
    *this *= factor;
}

nxExactAmount& nxExactAmount::operator*=(const nxDecimal& factor)
{
    _mantissa *= factor.GetMantissa();  // 0 of one that is not valid
    _places = static_cast<unsigned char>(_places + factor.GetDecimalPlaces());
    return *this;
}

void nxExactAmount::_Widen(unsigned char places)
{
    for (; _places < places; ++_places)
        _mantissa *= 10;
}

nxExactAmount& nxExactAmount::operator+=(const nxExactAmount& other)
{
    nxExactAmount added = other;
    added._Widen(_places);
    _Widen(added._places);
    _mantissa += added._mantissa;
    return *this;
}

nxExactAmount& nxExactAmount::operator-=(const nxExactAmount& other)
{
    nxExactAmount negative = other;
    negative._mantissa = -negative._mantissa;
    return *this += negative;
}

nxExactAmount nxExactAmount::GetShare(long long part, long long whole, unsigned char places) const
{
    nxExactAmount share = *this;
    share._Widen(places);
    // Whole times first: the product with part may pass 128 bits.
    const Wide times = share._mantissa / whole;
    share._mantissa = times * part + _Divide(share._mantissa % whole * part, whole);
    return share;
}

nxDecimal nxExactAmount::GetAsDecimal(unsigned char places) const
{
    constexpr Wide most = 0x7FFFFFFFFFFFFFFF;
    Wide scale = 1;
    unsigned char kept = _places;
    const auto fits = [&] {
        const Wide rounded = _Divide(_mantissa, scale);
        return kept <= std::min<unsigned char>(places, nxDecimal::MaxDecimalPlaces) && rounded <= most &&
               rounded >= -most;
    };
    while (kept != 0 && !fits()) {
        scale *= 10;
        --kept;
    }
    if (!fits()) return {};
    return nxDecimal::FromMantissa(static_cast<long long>(_Divide(_mantissa, scale)), kept);
}
