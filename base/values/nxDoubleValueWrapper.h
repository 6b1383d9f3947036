#pragma once

#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxValueStatusEnum.h"
#include "base/values/nxValueMarks.h"

// A double of which two large whole numbers are reserved as the marks null and no-change. Null by default.
// Comparison allows a difference below 1e-8; arithmetic works on the raw number and does not look at the
// marks.
class nxDoubleValueWrapper
{
public:
    static constexpr double NullValue = 4503599627370495.0;
    static constexpr double NoChangeValue = 4503599627370494.0;

    constexpr nxDoubleValueWrapper() = default;
    constexpr nxDoubleValueWrapper(double value) : _value(value) {}
    // These two are crossed over: the tag of one mark gives the other. Stored data and callers rely on it,
    // so it stays; SetNull and SetNoChange are the right way round.
    constexpr nxDoubleValueWrapper(nxNoChangeInitalizer) : _value(NullValue) {}
    constexpr nxDoubleValueWrapper(nxNullInitalizer) : _value(NoChangeValue) {}
    nxDoubleValueWrapper& operator=(double value)
    {
        _value = value;
        return *this;
    }

    void SetNull() { _value = NullValue; }
    void SetNoChange() { _value = NoChangeValue; }
    bool IsNull() const { return _value == NullValue; }
    bool IsNoChange() const { return _value == NoChangeValue; }
    bool IsValid() const { return !IsNull() && !IsNoChange(); }
    nxValueStatusEnum GetStatus() const;

    // The raw number, marks included.
    double GetValue() const { return _value; }
    operator double() const { return _value; }

    bool operator==(double other) const { return _value - other < Tolerance && other - _value < Tolerance; }
    bool operator!=(double other) const { return !(*this == other); }
    bool operator<(double other) const { return *this != other && _value < other; }
    bool operator>(double other) const { return *this != other && _value > other; }
    bool operator<=(double other) const { return *this == other || _value <= other; }
    bool operator>=(double other) const { return *this == other || _value >= other; }

    nxDoubleValueWrapper operator+(double other) const { return _value + other; }
    nxDoubleValueWrapper operator-(double other) const { return _value - other; }
    nxDoubleValueWrapper operator*(double other) const { return _value * other; }
    nxDoubleValueWrapper operator/(double other) const { return _value / other; }
    nxDoubleValueWrapper& operator+=(double other) { return *this = _value + other; }
    nxDoubleValueWrapper& operator-=(double other) { return *this = _value - other; }
    nxDoubleValueWrapper& operator*=(double other) { return *this = _value * other; }
    nxDoubleValueWrapper& operator/=(double other) { return *this = _value / other; }

    // Empty for a mark.
    std::string GetAsString() const;
    // "NULL" or "NO_CHANGE" for a mark.
    std::string GetAsLogString() const;
    // As nxStringHelper::SetFromString with the separator "."; on an error the value is null.
    nxErrorEnum SetFromString(const std::string& text);

    // The greater or the lesser of two. A value that is not valid gives way to the other; of two equal ones,
    // `a`.
    static nxDoubleValueWrapper GetMax(const nxDoubleValueWrapper& a, const nxDoubleValueWrapper& b);
    static nxDoubleValueWrapper GetMin(const nxDoubleValueWrapper& a, const nxDoubleValueWrapper& b);

private:
    static constexpr double Tolerance = 1e-8;

    double _value = NullValue;
};
