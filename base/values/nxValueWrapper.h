#pragma once

#include <compare>
#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/values/nxStringHelper.h"
#include "base/values/nxValueMarks.h"

// An integer of type T of which two values are reserved as the marks null and no-change. As large as a T,
// trivially copyable; null by default. It compares by its raw value, marks included.
template <class T, long long nullValue, long long noChangeValue>
class nxValueWrapper
{
public:
    static constexpr T NullValue = static_cast<T>(nullValue);
    static constexpr T NoChangeValue = static_cast<T>(noChangeValue);

    constexpr nxValueWrapper() noexcept = default;
    constexpr nxValueWrapper(T value) noexcept : _value(value) {}
    constexpr nxValueWrapper(nxNullInitalizer) noexcept {}
    constexpr nxValueWrapper(nxNoChangeInitalizer) noexcept : _value(NoChangeValue) {}

    // The raw value, marks included.
    constexpr T GetValue() const noexcept { return _value; }
    constexpr void SetValue(T value) noexcept { _value = value; }
    constexpr void SetNull() noexcept { _value = NullValue; }
    constexpr void SetNoChange() noexcept { _value = NoChangeValue; }
    constexpr bool IsNull() const noexcept { return _value == NullValue; }
    constexpr bool IsNoChange() const noexcept { return _value == NoChangeValue; }
    constexpr bool IsValid() const noexcept { return !IsNull() && !IsNoChange(); }

    friend constexpr bool operator==(nxValueWrapper, nxValueWrapper) noexcept = default;
    friend constexpr auto operator<=>(nxValueWrapper, nxValueWrapper) noexcept = default;

    // Empty for a mark.
    std::string GetAsString() const
    {
        return IsValid() ? nxStringHelper::GetAsString(_value) : std::string();
    }
    // "NULL" or "NO_CHANGE" for a mark.
    std::string GetAsLogString() const
    {
        return IsNull() ? nxNullText : IsNoChange() ? nxNoChangeText : nxStringHelper::GetAsString(_value);
    }
    // As nxStringHelper::SetFromString; the number of a mark gives the mark. On an error the value is null.
    nxErrorEnum SetFromString(const std::string& text)
    {
        const nxErrorEnum error = nxStringHelper::SetFromString(text, _value);
        if (!error.IsSuccess()) SetNull();
        return error;
    }

private:
    T _value = NullValue;
};

// Volumes, in whole lots, and ids.
using nxVolume = nxValueWrapper<unsigned int, -1, -2>;
// Integer parameters.
using nxIntValue = nxValueWrapper<int, 2147483647, 2147483646>;
