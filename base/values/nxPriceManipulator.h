#pragma once

#include "base/values/nxDecimal.h"

// Knows which prices of a product are valid: the multiples of its tick. Without a tick, every price is valid
// and stays as it is. A plain value.
class nxPriceManipulator
{
public:
    nxPriceManipulator() = default;
    // A tick that is not valid and positive is the same as none.
    explicit nxPriceManipulator(const nxDecimal& tickSize) : _tickSize(tickSize) {}

    const nxDecimal& GetTickSize() const { return _tickSize; }

    // The decimal places in which a valid price near `price` is written: those of the tick, or without one
    // those of `price` itself.
    unsigned char NumberOfDecimalPlaces(const nxDecimal& price) const;
    // Brings `price` to the nearest valid price, as nxDecimal::Round does.
    void RoundToValidPrice(const nxRoundingMethodEnum& method, nxDecimal& price) const;

private:
    nxDecimal _tickSize;
};
