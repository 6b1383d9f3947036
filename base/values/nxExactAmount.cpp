#include "base/values/nxExactAmount.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>

#include "base/values/nxPowersOfTen.h"

namespace {

constexpr int MostZeros = static_cast<int>(std::size(nxPowersOfTen)) - 1;

}  // namespace

// Half away from zero.
nxExactAmount::Wide nxExactAmount::_Divide(Wide numerator, Wide denominator)
{
    const Wide quotient = numerator / denominator;
    const Wide rest = numerator % denominator;
    const Wide size = denominator < 0 ? -denominator : denominator;
    const Wide part = rest < 0 ? -rest : rest;
    if (part < size - part) return quotient;
    return (numerator < 0) == (denominator < 0) ? quotient + 1 : quotient - 1;
}

nxExactAmount& nxExactAmount::_Saturate(bool isNegative)
{
    _mantissa = isNegative ? -Most : Most;
    _places = 0;
    return *this;
}

nxExactAmount& nxExactAmount::_MultiplySlow(const nxDecimal& factor)
{
    nxDecimal other = factor;
    Wide product = 0;
    while (__builtin_mul_overflow(_mantissa, Wide(other.GetMantissa()), &product) || product < -Most) {
        // Zeros first, then digits of the amount, of which there are more than of the factor.
        const unsigned char places = other.GetDecimalPlaces();
        other.Normalise(0);
        if (other.GetDecimalPlaces() != places) continue;
        if (_places == 0 && places == 0) return _Saturate(IsNegative() != (factor < nxDecimalZero));
        if (_places != 0) {
            _Round(static_cast<unsigned char>(_places - 1));
        } else {
            other.Round(nxDecimal::FromMantissa(1, static_cast<unsigned char>(places - 1)),
                        nxRoundingMethod_Nearest);
        }
    }
    _mantissa = product;  // 0 of one that is not valid
    _places = static_cast<unsigned char>(_places + other.GetDecimalPlaces());
    return *this;
}

// As far as there is room.
void nxExactAmount::_Widen(unsigned char places)
{
    if (_places >= places) return;
    Wide all = 0;
    if (places - _places <= MostZeros &&
        !__builtin_mul_overflow(_mantissa, Wide(nxPowersOfTen[places - _places]), &all))
    {
        _mantissa = all;
        _places = places;
        return;
    }
    for (Wide wider = 0; _places < places && !__builtin_mul_overflow(_mantissa, Wide(10), &wider); ++_places)
        _mantissa = wider;
}

void nxExactAmount::_Round(unsigned char places)
{
    constexpr int digits = 38;  // that a mantissa has at most, and a power of ten below its range
    const int dropped = _places - places;
    if (dropped == 0) return;
    Wide scale = 1;
    for (int i = 0; i < std::min(dropped, digits); ++i)
        scale *= 10;
    _mantissa = dropped > digits ? 0 : _Divide(_mantissa, scale);
    _places = places;
}

nxExactAmount& nxExactAmount::_AddSlow(const nxExactAmount& other)
{
    // Prices have as many places as they need, so most sums are of amounts with other places. One of 64 bits
    // has room for the zeros.
    const auto mine = static_cast<long long>(_mantissa), others = static_cast<long long>(other._mantissa);
    const int zeros = other._places - _places;
    if (mine == _mantissa && others == other._mantissa && std::abs(zeros) <= MostZeros) [[likely]] {
        _mantissa = zeros > 0 ? Wide(mine) * nxPowersOfTen[zeros] + others
                              : Wide(others) * nxPowersOfTen[-zeros] + mine;
        _places = std::max(_places, other._places);
        return *this;
    }
    nxExactAmount added = other;
    added._Widen(_places);
    _Widen(added._places);
    unsigned char common = std::min(_places, added._places);
    _Round(common);
    added._Round(common);
    Wide sum = 0;
    while (__builtin_add_overflow(_mantissa, added._mantissa, &sum) || sum < -Most) {
        if (common-- == 0) return _Saturate(IsNegative());
        _Round(common);
        added._Round(common);
    }
    _mantissa = sum;
    return *this;
}

nxExactAmount nxExactAmount::GetShare(long long part, long long whole, unsigned char places) const
{
    nxExactAmount share = *this;
    share._Widen(places);
    // The places beyond are divided away with the whole, since rounding twice may come out one too large;
    // those for which 128 bits have no room are rounded first.
    Wide divisor = whole, wider = 0, product = 0;
    unsigned char last = std::min(share._places, places);
    while (last < share._places && !__builtin_mul_overflow(divisor, Wide(10), &wider) &&
           !__builtin_mul_overflow(wider, Wide(part), &product))
    {
        divisor = wider;
        ++last;
    }
    share._Round(last);
    // Whole times first: the product with part may pass 128 bits.
    const Wide times = share._mantissa / divisor;
    share._mantissa = times * part + _Divide(share._mantissa % divisor * part, divisor);
    share._places = std::min(share._places, places);
    return share;
}

std::string nxExactAmount::GetAsText() const
{
    std::string digits;  // from the last on
    unsigned char places = _places;
    for (Wide rest = _mantissa < 0 ? -_mantissa : _mantissa; rest != 0 || digits.size() <= places; rest /= 10)
    {
        const auto digit = static_cast<char>('0' + static_cast<int>(rest % 10));
        if (digits.empty() && digit == '0' && places != 0) {
            --places;
            continue;
        }
        if (digits.size() == places && places != 0) digits += '.';
        digits += digit;
    }
    if (_mantissa < 0) digits += '-';
    return {digits.rbegin(), digits.rend()};
}

nxExactAmount nxExactAmount::FromText(std::string_view text)
{
    nxExactAmount amount;
    const bool isNegative = text.starts_with('-');
    bool isFraction = false;
    for (const char character : text.substr(isNegative ? 1 : 0)) {
        if (character == '.' && !isFraction) {
            isFraction = true;
            continue;
        }
        if (character < '0' || character > '9') break;
        Wide next = 0;
        if (__builtin_mul_overflow(amount._mantissa, Wide(10), &next) ||
            __builtin_add_overflow(next, Wide(character - '0'), &next))
        {
            if (!isFraction) amount._Saturate(false);
            break;
        }
        amount._mantissa = next;
        if (isFraction) ++amount._places;
    }
    if (isNegative) amount._mantissa = -amount._mantissa;
    return amount;
}

nxDecimal nxExactAmount::GetAsDecimal(unsigned char places) const
{
    constexpr Wide most = std::numeric_limits<long long>::max();
    for (places = std::min({places, nxDecimal::MaxDecimalPlaces, _places});; --places) {
        // Each time from the whole: what is rounded twice may come out one too large.
        nxExactAmount rounded = *this;
        rounded._Round(places);
        if (places == 0) rounded._mantissa = std::clamp(rounded._mantissa, -most, most);
        if (rounded._mantissa <= most && rounded._mantissa >= -most)
            return nxDecimal::FromMantissa(static_cast<long long>(rounded._mantissa), places);
    }
}
