#pragma once

#include <string>

#include "base/enums/nxEnumValue.h"

// An enumerated value that knows its class, its texts and the marks undefined (0) and no-change (2). A plain
// value: copy it freely, guard it like any other when threads share it. Concrete classes derive through
// nxEnumRange.
class nxEnum
{
public:
    virtual std::string GetClassName() const = 0;

protected:
    // The exclusive limits of the class's range.
    virtual unsigned int _MinValue() const = 0;
    virtual unsigned int _MaxValue() const = 0;

public:
    unsigned int GetValue() const { return _value; }
    nxEnumValue GetEnumValue() const { return static_cast<nxEnumValue>(_value); }

    // The texts: "UNDEFINED" and "NO_CHANGE" for the marks, "NOT_REGISTERED" for a value without texts. The
    // references stay good for the life of the process.
    const std::string& GetAsString() const;
    const std::string& GetShortDescription() const;
    const std::string& GetLongDescription() const;

    // Takes the value of this class whose name or short description is `text`, to the byte. False, and
    // undefined from then on, when there is none.
    bool SetFromString(const std::string& text);

    bool IsUndefined() const { return _value == nxEnum_Undefined; }
    bool IsNoChange() const { return _value == nxEnum_NoChange; }
    void SetNoChange() { _value = nxEnum_NoChange; }

    // As the constructors: a value outside the class's range becomes undefined.
    nxEnum& operator=(nxEnumValue value)
    {
        _Set(value);
        return *this;
    }

protected:
    constexpr nxEnum() = default;
    constexpr nxEnum(const nxEnum&) = default;
    constexpr nxEnum& operator=(const nxEnum&) = default;
    ~nxEnum() = default;

    // Stores a value inside the exclusive limits or one of the marks; anything else stores 0 and gives
    // false.
    bool _Set(unsigned int value) { return _Set(value, _MinValue(), _MaxValue()); }
    constexpr bool _Set(unsigned int value, unsigned int minValue, unsigned int maxValue)
    {
        const bool fits =
            (value > minValue && value < maxValue) || value == nxEnum_Undefined || value == nxEnum_NoChange;
        _value = fits ? value : nxEnum_Undefined;
        return fits;
    }
    bool _LessThan(const nxEnum& other) const { return _value < other._value; }

private:
    unsigned int _value = nxEnum_Undefined;
};
