#include "base/enums/nxBitMask.h"

#include "base/enums/nxBitMaskText.h"

bool nxBitMask::IsValid() const
{
    return _value < NoChangeBit;
}

bool nxBitMask::IsNoChange() const
{
    return AreAnyBitsSet(NoChangeBit);
}

bool nxBitMask::IsNull() const
{
    return AreAnyBitsSet(NullBit);
}

void nxBitMask::SetBits(const nxBitMask& bits)
{
    _value |= bits._value;
}

void nxBitMask::SetBits(unsigned int bits)
{
    _value |= bits;
}

void nxBitMask::SetNull()
{
    _value = NullBit;
}

void nxBitMask::SetNoChange()
{
    _value = NoChangeBit;
}

std::string nxBitMask::GetShortDescription(const std::string& separator) const
{
    return nxBitMaskText(*this, "", separator);
}

std::string nxBitMask::GetLongDescription(const std::string& separator) const
{
    return nxBitMaskText(*this, "bit ", separator);
}

nxBitMask& nxBitMask::operator=(unsigned int value)
{
    _value = value;
    return *this;
}

nxBitMask& nxBitMask::operator|=(const nxBitMask& bits)
{
    _value |= bits._value;
    return *this;
}

nxBitMask& nxBitMask::operator|=(unsigned int bits)
{
    _value |= bits;
    return *this;
}
