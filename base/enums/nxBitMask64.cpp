#include "base/enums/nxBitMask64.h"

#include "base/enums/nxBitMaskText.h"

bool nxBitMask64::IsValid() const
{
    return !AreAnyBitsSet(NullBit | NoChangeBit);
}

bool nxBitMask64::IsNoChange() const
{
    return AreAnyBitsSet(NoChangeBit);
}

bool nxBitMask64::IsNull() const
{
    return AreAnyBitsSet(NullBit);
}

void nxBitMask64::SetBits(const nxBitMask64& bits)
{
    _value |= bits._value;
}

void nxBitMask64::SetBits(const unsigned long long& bits)
{
    _value |= bits;
}

void nxBitMask64::SetNull()
{
    _value = NullBit;
}

void nxBitMask64::SetNoChange()
{
    _value = NoChangeBit;
}

std::string nxBitMask64::GetShortDescription(const std::string& separator) const
{
    return nxBitMaskText(*this, "", separator);
}

std::string nxBitMask64::GetLongDescription(const std::string& separator) const
{
    return nxBitMaskText(*this, "bit ", separator);
}

nxBitMask64& nxBitMask64::operator=(const unsigned long long& value)
{
    _value = value;
    return *this;
}

nxBitMask64& nxBitMask64::operator|=(const nxBitMask64& bits)
{
    _value |= bits._value;
    return *this;
}

nxBitMask64& nxBitMask64::operator|=(const unsigned long long& bits)
{
    _value |= bits;
    return *this;
}
