#include "base/values/nxPriceManipulator.h"

unsigned char nxPriceManipulator::NumberOfDecimalPlaces(const nxDecimal& price) const
{
    return _tickSize > nxDecimalZero ? _tickSize.GetDecimalPlaces() : price.GetDecimalPlaces();
}

void nxPriceManipulator::RoundToValidPrice(const nxRoundingMethodEnum& method, nxDecimal& price) const
{
    price.Round(_tickSize, method);
}
