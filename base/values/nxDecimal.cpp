#include "base/values/nxDecimal.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>

#include "base/values/nxInt128.h"
#include "base/values/nxPowersOfTen.h"
#include "base/values/nxPriceManipulator.h"

namespace {

constexpr std::uint64_t MaxMagnitude = 0x7FFFFFFFFFFFFFFF;

// The magnitude of numerator / denominator, both positive, rounded half up; the sum of denominator and
// remainder must fit the type.
template <class Unsigned>
Unsigned DivideRounded(Unsigned numerator, Unsigned denominator)
{
    const Unsigned remainder = numerator % denominator;
    return numerator / denominator + (remainder >= denominator - remainder ? 1 : 0);
}

nxUInt128 Magnitude(nxInt128 value)
{
    return value < 0 ? -static_cast<nxUInt128>(value) : static_cast<nxUInt128>(value);
}

nxDecimal FromMagnitude(bool negative, nxUInt128 magnitude, unsigned char places)
{
    if (magnitude > MaxMagnitude) return {};
    const auto mantissa = static_cast<long long>(magnitude);
    return nxDecimal::FromMantissa(negative ? -mantissa : mantissa, places);
}

bool IsDigit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

// Adds the digits at `text` to `number`; stops at the first other character. False when the number passes 64
// bits, which only the checked form looks for.
template <bool checked>
bool ReadDigits(const char*& text, const char* last, std::uint64_t& number)
{
    for (; text != last && IsDigit(*text); ++text) {
        const auto digit = static_cast<std::uint64_t>(*text - '0');
        if constexpr (checked) {
            if (__builtin_mul_overflow(number, std::uint64_t{10}, &number) ||
                __builtin_add_overflow(number, digit, &number))
                return false;
        } else
            number = number * 10 + digit;
    }
    return true;
}

// The form of a text as SetFromChars accepts it.
bool IsDecimalText(const char* text, const char* last, char separator)
{
    const auto skipDigits = [&] {
        const char* const from = text;
        while (text != last && IsDigit(*text))
            ++text;
        return text != from;
    };
    if (!skipDigits()) return false;
    if (text == last) return true;
    return *text++ == separator && skipDigits() && text == last;
}

}  // namespace

nxDecimal::nxDecimal(long long numerator, long long denominator, unsigned char places) noexcept
{
    if (denominator == 0 || places > MaxDecimalPlaces) return;
    const nxUInt128 scaled = Magnitude(numerator) * static_cast<nxUInt128>(nxPowersOfTen[places]);
    *this = FromMagnitude((numerator < 0) != (denominator < 0), DivideRounded(scaled, Magnitude(denominator)),
                          places);
}

nxValueStatusEnum nxDecimal::GetStatus() const
{
    return IsValid() ? nxValueStatus_Valid : IsNull() ? nxValueStatus_Null : nxValueStatus_NoChange;
}

double nxDecimal::_GetAsDoubleSlow() const noexcept
{
    if (!IsValid()) return std::numeric_limits<double>::quiet_NaN();
    // A mantissa beyond 2^53 would be rounded twice, once by the conversion and once by the division; reading
    // the text rounds once.
    char text[32];
    char* end = std::to_chars(text, text + 24, _mantissa).ptr;
    *end++ = 'e';
    *end++ = '-';
    end = std::to_chars(end, text + sizeof text, static_cast<unsigned int>(_places)).ptr;
    double result = 0;
    std::from_chars(text, end, result);
    return result;
}

void nxDecimal::SetFromDouble(const double& value, unsigned char places) noexcept
{
    constexpr int fractionBits = 52;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const bool negative = bits >> 63 != 0;
    const auto exponentField = static_cast<int>(bits >> fractionBits & 0x7FF);
    std::uint64_t significand = bits & ((std::uint64_t{1} << fractionBits) - 1);
    SetNull();
    if (exponentField == 0x7FF || places > MaxDecimalPlaces) return;
    if (exponentField != 0) significand |= std::uint64_t{1} << fractionBits;

    // value = significand * 2^exponent, and at most 53 + 60 bits are taken by the scaled number.
    const int exponent = std::max(exponentField, 1) - 1023 - fractionBits;
    nxUInt128 scaled = static_cast<nxUInt128>(significand) * static_cast<nxUInt128>(nxPowersOfTen[places]);
    if (exponent >= 0) {
        if (exponent > 10 && significand != 0) return;
        scaled <<= exponent;
    } else if (exponent > -128) {
        const int shift = -exponent;
        scaled = (scaled >> shift) + (scaled >> (shift - 1) & 1);
    } else
        scaled = 0;
    *this = FromMagnitude(negative, scaled, places);
}

nxErrorEnum nxDecimal::SetFromString(const std::string& text, char separator) noexcept
{
    return SetFromChars(text.data(), text.data() + text.size(), separator);
}

nxErrorEnum nxDecimal::SetFromChars(const char* first, const char* last, char separator) noexcept
{
    SetNull();
    const bool negative = first != last && *first == '-';
    if (first != last && (*first == '-' || *first == '+')) ++first;

    constexpr std::ptrdiff_t alwaysFits = 19;  // that many digits stay below 2^64
    if (last - first <= alwaysFits) [[likely]] {
        std::uint64_t number = 0;
        const char* text = first;
        std::ptrdiff_t places = 0;
        ReadDigits<false>(text, last, number);
        bool good = text != first;
        if (text != last) {
            const char* const fraction = text + 1;
            good = good && *text == separator && fraction != last;
            text = fraction;
            ReadDigits<false>(text, last, number);
            places = text - fraction;
        }
        if (!good || text != last) return nxError_NotANumber;
        if (number > MaxMagnitude) return nxError_NumberOutOfRange;
        const auto mantissa = static_cast<long long>(number);
        _SetValid(negative ? -mantissa : mantissa, static_cast<unsigned char>(places));
        return {};
    }

    if (!IsDecimalText(first, last, separator)) return nxError_NotANumber;
    const char* const point = std::find(first, last, separator);
    // Zeros at the end of a fraction carry no value; they are given up until the rest fits.
    for (;; --last) {
        std::uint64_t number = 0;
        const char* text = first;
        const std::ptrdiff_t places = last > point ? last - point - 1 : 0;
        bool fits = places <= MaxDecimalPlaces && ReadDigits<true>(text, point, number);
        if (fits && places > 0) fits = ReadDigits<true>(++text, last, number);
        if (fits && number <= MaxMagnitude) {
            const auto mantissa = static_cast<long long>(number);
            _SetValid(negative ? -mantissa : mantissa, static_cast<unsigned char>(places));
            return {};
        }
        if (places == 0 || last[-1] != '0') return nxError_NumberOutOfRange;
    }
}

std::string nxDecimal::GetAsString(char separator) const
{
    if (!IsValid()) return {};
    // Twenty digits, the sign and the separator at most; written from the end.
    char text[32];
    char* const end = text + sizeof text;
    char* begin = end;
    auto rest = static_cast<std::uint64_t>(_mantissa < 0 ? -_mantissa : _mantissa);
    for (int written = 0; rest != 0 || written <= _places; ++written) {
        if (written == _places && _places != 0) *--begin = separator;
        *--begin = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    if (_mantissa < 0) *--begin = '-';
    return {begin, end};
}

std::string nxDecimal::GetAsLogString(char separator) const
{
    return IsValid() ? GetAsString(separator) : IsNull() ? nxNullText : nxNoChangeText;
}

void nxDecimal::Normalise(const unsigned char& places) noexcept
{
    if (!IsValid()) return;
    while (_places > places && _mantissa % 10 == 0) {
        _mantissa /= 10;
        --_places;
    }
    for (long long longer = 0; _places < std::min(places, MaxDecimalPlaces) &&
                               !__builtin_mul_overflow(_mantissa, 10ll, &longer) && longer >= -MaxMantissa;
         ++_places)
        _mantissa = longer;
}

void nxDecimal::Round(const nxDecimal& tick, const nxRoundingMethodEnum& method) noexcept
{
    if (!IsValid() || !tick.IsValid() || tick._mantissa <= 0 || method != nxRoundingMethod_Nearest) return;
    const bool negative = _mantissa < 0;
    const auto magnitude = static_cast<std::uint64_t>(negative ? -_mantissa : _mantissa);
    const auto step = static_cast<std::uint64_t>(tick._mantissa);

    // Both at the greater count of places, so that their quotient counts the ticks.
    const auto scale = [](int missing) {
        return static_cast<std::uint64_t>(nxPowersOfTen[std::max(missing, 0)]);
    };
    const std::uint64_t magnitudeScale = scale(tick._places - _places);
    const std::uint64_t stepScale = scale(_places - tick._places);
    std::uint64_t narrowMagnitude = 0;
    std::uint64_t narrowStep = 0;
    nxUInt128 ticks = 0;
    if (!__builtin_mul_overflow(magnitude, magnitudeScale, &narrowMagnitude) &&
        !__builtin_mul_overflow(step, stepScale, &narrowStep)) [[likely]]
        ticks = DivideRounded(narrowMagnitude, narrowStep);
    else
        ticks = DivideRounded(static_cast<nxUInt128>(magnitude) * magnitudeScale,
                              static_cast<nxUInt128>(step) * stepScale);
    *this = FromMagnitude(negative, ticks * step, tick._places);
}

void nxDecimal::Round(const nxPriceManipulator& manipulator, const nxRoundingMethodEnum& method) noexcept
{
    manipulator.RoundToValidPrice(method, *this);
}

nxDecimal nxDecimal::operator-() const noexcept
{
    return IsValid() ? FromMantissa(-_mantissa, _places) : nxDecimal();
}

std::weak_ordering nxDecimal::_CompareSlow(const nxDecimal& other) const noexcept
{
    if (_status != other._status) return _status <=> other._status;
    const auto scaled = [](const nxDecimal& value, unsigned char places) {
        return static_cast<nxInt128>(value._mantissa) * nxPowersOfTen[places - value._places];
    };
    const unsigned char places = std::max(_places, other._places);
    const nxInt128 left = scaled(*this, places);
    const nxInt128 right = scaled(other, places);
    return left < right   ? std::weak_ordering::less
           : left > right ? std::weak_ordering::greater
                          : std::weak_ordering::equivalent;
}

nxDecimal nxDecimal::_Add(const nxDecimal& other, int sign) const noexcept
{
    if (!IsValid() || !other.IsValid()) return {};
    unsigned char places = std::max(_places, other._places);
    const auto scaled = [&](const nxDecimal& value) {
        return static_cast<nxInt128>(value._mantissa) * nxPowersOfTen[places - value._places];
    };
    const nxInt128 sum = scaled(*this) + scaled(other) * sign;
    nxUInt128 magnitude = Magnitude(sum);
    // The places asked for may be too many for so large a number; zeros at the end can go.
    for (; magnitude > MaxMagnitude && places > 0 && magnitude % 10 == 0; --places)
        magnitude /= 10;
    return FromMagnitude(sum < 0, magnitude, places);
}
