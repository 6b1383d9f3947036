#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/values/nxDecimal.h"
#include "base/values/nxInt128.h"

// A sum of money kept exactly: 128 bits and a count of decimal places that grows with what is added and
// multiplied. Up to 10^38 of the smallest unit in play, so that sums of prices times volumes stay exact far
// beyond what one nxDecimal holds. What needs more gives up its last places, half away from zero; what is too
// large even without places stays at the end of the range.
class nxExactAmount
{
public:
    nxExactAmount() = default;
    // price * volume * factor; a price or factor that is not valid counts as 0.
    nxExactAmount(const nxDecimal& price, long long volume, const nxDecimal& factor = nxDecimalOne)
    {
        if (!price.IsValid()) return;
        _mantissa = Wide(price.GetMantissa()) * volume;
        _places = price.GetDecimalPlaces();
        *this *= factor;
    }

    nxExactAmount& operator+=(const nxExactAmount& other)
    {
        Wide sum = 0;
        if (_places != other._places || __builtin_add_overflow(_mantissa, other._mantissa, &sum) ||
            sum < -Most) [[unlikely]]
            return _AddSlow(other);
        _mantissa = sum;
        return *this;
    }
    nxExactAmount& operator-=(const nxExactAmount& other)
    {
        nxExactAmount negative = other;
        negative._mantissa = -negative._mantissa;
        return *this += negative;
    }
    // A factor that is not valid counts as 0.
    nxExactAmount& operator*=(const nxDecimal& factor)
    {
        const auto mantissa = static_cast<long long>(_mantissa);
        if (mantissa != _mantissa) [[unlikely]]
            return _MultiplySlow(factor);
        _mantissa = Wide(mantissa) * factor.GetMantissa();  // 0 of one that is not valid
        _places = static_cast<unsigned char>(_places + factor.GetDecimalPlaces());
        return *this;
    }
    friend nxExactAmount operator+(const nxExactAmount& a, const nxExactAmount& b)
    {
        nxExactAmount sum = a;
        sum += b;
        return sum;
    }
    friend nxExactAmount operator-(const nxExactAmount& a, const nxExactAmount& b)
    {
        nxExactAmount difference = a;
        difference -= b;
        return difference;
    }

    friend nxExactAmount operator*(nxExactAmount a, const nxDecimal& factor) { return a *= factor; }
    friend bool operator==(const nxExactAmount& a, const nxExactAmount& b) { return (a - b).IsZero(); }

    // The share part / whole, rounded half away from zero to `places`, or fewer where there is no room for
    // them. whole is not 0, and part not above it in size.
    nxExactAmount GetShare(long long part, long long whole, unsigned char places) const;
    // Rounded half away from zero to as many places as there are, at most `places`, and fewer where the
    // amount is too large for that. Beyond a decimal's range it is the last number of that.
    nxDecimal GetAsDecimal(unsigned char places = 10) const;
    // The double nearest to what GetAsDecimal gives.
    double GetAsDouble() const
    {
        constexpr Wide exact = 1ll << 53;
        if (_places <= 10 && _mantissa <= exact && _mantissa >= -exact) [[likely]]
            return nxDecimal::FromMantissa(static_cast<long long>(_mantissa), _places).GetAsDouble();
        return GetAsDecimal().GetAsDouble();
    }
    // All its digits, "-1234.5": no exponent, and no zeros at the end of a fraction.
    std::string GetAsText() const;
    // What GetAsText gives. Ends at the first character that is none of it.
    static nxExactAmount FromText(std::string_view text);
    // Its value is mantissa / 10^places; none where the mantissa needs more bits.
    struct Parts
    {
        long long mantissa;
        unsigned char places;
    };
    std::optional<Parts> GetParts() const
    {
        const auto mantissa = static_cast<long long>(_mantissa);
        if (mantissa != _mantissa) return std::nullopt;
        return Parts{mantissa, _places};
    }
    static nxExactAmount FromParts(const Parts& parts)
    {
        nxExactAmount amount;
        amount._mantissa = parts.mantissa;
        amount._places = parts.places;
        return amount;
    }
    bool IsNegative() const { return _mantissa < 0; }
    bool IsZero() const { return _mantissa == 0; }

private:
    using Wide = nxInt128;
    static constexpr Wide Most = static_cast<Wide>(~static_cast<nxUInt128>(0) >> 1);

    // What passes 128 bits, or has other places.
    nxExactAmount& _AddSlow(const nxExactAmount& other);
    nxExactAmount& _MultiplySlow(const nxDecimal& factor);
    static Wide _Divide(Wide numerator, Wide denominator);
    void _Widen(unsigned char places);
    void _Round(unsigned char places);
    nxExactAmount& _Saturate(bool isNegative);

    Wide _mantissa = 0;
    unsigned char _places = 0;
};
