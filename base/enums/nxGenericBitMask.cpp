#include "base/enums/nxGenericBitMask.h"

void nxGenericBitMask::SetBits(const nxBitMask& bits)
{
    SetBits(bits.GetValue() & ~(NullBit | NoChangeBit));
}

std::string nxGenericBitMask::GetShortDescription() const
{
    return GetShortDescription(",");
}

std::string nxGenericBitMask::GetLongDescription() const
{
    return GetLongDescription(",");
}
