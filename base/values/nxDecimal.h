#pragma once

#include <compare>
#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxRoundingMethodEnum.h"
#include "base/enums/nxValueStatusEnum.h"
#include "base/values/nxValueMarks.h"

class nxPriceManipulator;

// A decimal number, held exactly: a signed mantissa of 64 bits and a count of decimal places from 0 to 18,
// or one of the marks null and no-change. The magnitude of the mantissa is at most 2^63 - 1. Sixteen bytes,
// no heap, trivially copyable. Comparison and arithmetic are exact, also between different counts of places.
// What cannot be represented becomes null, and a mark in any operand makes the result null.
class nxDecimal
{
public:
    static constexpr unsigned char MaxDecimalPlaces = 18;

    // Null.
    constexpr nxDecimal() noexcept = default;
    constexpr nxDecimal(nxNullInitalizer) noexcept {}
    constexpr nxDecimal(nxNoChangeInitalizer) noexcept : _status(Status::NoChange) {}
    // numerator / denominator, rounded half away from zero to `places`. Null for a denominator of 0 or more
    // than 18 places.
    nxDecimal(long long numerator, long long denominator, unsigned char places) noexcept;

    static constexpr nxDecimal GetNullDecimal() noexcept { return {}; }
    // mantissa / 10^places; null for more than 18 places.
    static constexpr nxDecimal FromMantissa(long long mantissa, unsigned char places) noexcept
    {
        nxDecimal result;
        if (places <= MaxDecimalPlaces && mantissa >= -MaxMantissa) result._SetValid(mantissa, places);
        return result;
    }

    constexpr void SetNull() noexcept { *this = nxDecimal(); }
    constexpr void SetNoChange() noexcept { *this = nxDecimal(nxNoChangeInitalizer()); }
    constexpr bool IsNull() const noexcept { return _status == Status::Null; }
    constexpr bool IsNoChange() const noexcept { return _status == Status::NoChange; }
    constexpr bool IsValid() const noexcept { return _status == Status::Valid; }
    nxValueStatusEnum GetStatus() const;

    // Both 0 for a mark.
    constexpr long long GetMantissa() const noexcept { return _mantissa; }
    constexpr unsigned char GetDecimalPlaces() const noexcept { return _places; }

    // The double nearest to the number; NaN for a mark.
    double GetAsDouble() const noexcept
    {
        constexpr long long exact = 1ll << 53;
        if (_status == Status::Valid && _mantissa <= exact && _mantissa >= -exact) [[likely]]
            return static_cast<double>(_mantissa) / DoublePowersOfTen[_places];
        return _GetAsDoubleSlow();
    }

    // The double's exact binary value, rounded half away from zero to `places`. Null for NaN, an infinity, a
    // number too large for that many places, or more than 18 places.
    void SetFromDouble(const double& value, unsigned char places) noexcept;

    // Reads [+-]digits[separator digits] and nothing else; the places are those of the text, less zeros at
    // its end that would not fit. On an error the value is null: nxError_NotANumber for another form,
    // nxError_NumberOutOfRange for what does not fit.
    nxErrorEnum SetFromString(const std::string& text, char separator = '.') noexcept;
    nxErrorEnum SetFromChars(const char* first, const char* last, char separator = '.') noexcept;

    // The number with all its places ("-0.05", "100.00"); empty for a mark.
    std::string GetAsString(char separator = '.') const;
    // The same, but "NULL" and "NO_CHANGE" for the marks.
    std::string GetAsLogString(char separator = '.') const;

    // Strips zeros at the end down to `places`, or adds zeros up to it. No significant digit is lost, and
    // where the zeros to add do not fit, as many are added as do.
    void Normalise(const unsigned char& places) noexcept;

    // Goes to the nearest multiple of `tick`, halves away from zero, with the tick's places. Left alone by a
    // method other than nxRoundingMethod_Nearest and by a tick that is not valid and positive.
    void Round(const nxDecimal& tick, const nxRoundingMethodEnum& method) noexcept;
    // Goes to a price that the manipulator calls valid.
    void Round(const nxPriceManipulator& manipulator, const nxRoundingMethodEnum& method) noexcept;

    nxDecimal operator-() const noexcept;
    nxDecimal operator+(const nxDecimal& other) const noexcept { return _Add(other, 1); }
    nxDecimal operator-(const nxDecimal& other) const noexcept { return _Add(other, -1); }
    nxDecimal& operator+=(const nxDecimal& other) noexcept { return *this = *this + other; }
    nxDecimal& operator-=(const nxDecimal& other) noexcept { return *this = *this - other; }

    // As numbers: 1.0 equals 1.00. Null is below no-change and both are below every number, so that a
    // decimal can be the key of a map.
    friend bool operator==(const nxDecimal& a, const nxDecimal& b) noexcept
    {
        if (a._IsOfSameForm(b)) [[likely]]
            return a._mantissa == b._mantissa;
        return a._CompareSlow(b) == 0;
    }
    [[gnu::always_inline]] friend std::weak_ordering operator<=>(const nxDecimal& a,
                                                                 const nxDecimal& b) noexcept
    {
        if (a._IsOfSameForm(b)) [[likely]]
            return a._mantissa <=> b._mantissa;
        return a._CompareSlow(b);
    }

private:
    enum class Status : unsigned char { Null, NoChange, Valid };
    static constexpr long long MaxMantissa = 0x7FFFFFFFFFFFFFFF;
    static constexpr double DoublePowersOfTen[MaxDecimalPlaces + 1] = {
        1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};

    constexpr void _SetValid(long long mantissa, unsigned char places) noexcept
    {
        _mantissa = mantissa;
        _places = places;
        _status = Status::Valid;
    }
    bool _IsOfSameForm(const nxDecimal& other) const noexcept
    {
        return _places == other._places && _status == other._status;
    }
    std::weak_ordering _CompareSlow(const nxDecimal& other) const noexcept;
    nxDecimal _Add(const nxDecimal& other, int sign) const noexcept;
    double _GetAsDoubleSlow() const noexcept;

    long long _mantissa = 0;
    unsigned char _places = 0;
    Status _status = Status::Null;
};

inline constexpr nxDecimal nxDecimalOne = nxDecimal::FromMantissa(1, 0);
inline constexpr nxDecimal nxDecimalZero = nxDecimal::FromMantissa(0, 0);
