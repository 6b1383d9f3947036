#pragma once

#include "base/enums/nxEnum.h"

// What all enum classes share: the exclusive limits of the range and the operations on a raw value. `Enum`
// is the concrete class, so that values of two classes do not compare by accident.
template <class Enum, unsigned int minValue, unsigned int maxValue>
class nxEnumRange : public nxEnum
{
public:
    constexpr nxEnumRange() = default;
    constexpr nxEnumRange(unsigned int value) { nxEnum::_Set(value, minValue, maxValue); }

    Enum& operator=(unsigned int value)
    {
        nxEnum::_Set(value, minValue, maxValue);
        return static_cast<Enum&>(*this);
    }

    friend bool operator==(const Enum& a, const Enum& b) { return a.GetValue() == b.GetValue(); }
    friend bool operator==(const Enum& a, unsigned int b) { return a.GetValue() == b; }
    friend bool operator<(const Enum& a, const Enum& b) { return a.GetValue() < b.GetValue(); }

protected:
    unsigned int _MinValue() const final { return minValue; }
    unsigned int _MaxValue() const final { return maxValue; }
};
