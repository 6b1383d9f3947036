#include "base/enums/nxGenericBitMask64.h"

void nxGenericBitMask64::SetBits(const nxBitMask64& bits)
{
    SetBits(bits.GetValue() & ~(NullBit | NoChangeBit));
}
