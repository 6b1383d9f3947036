#pragma once

#include "base/enums/nxBitMask64.h"

// A mask of 64 bits whose flags mean what its holder says.
class nxGenericBitMask64 : public nxBitMask64
{
public:
    nxGenericBitMask64() = default;
    nxGenericBitMask64(const nxGenericBitMask64&) = default;
    nxGenericBitMask64(const nxBitMask64& bits) : nxBitMask64(bits) {}
    nxGenericBitMask64(const unsigned long long& value) : nxBitMask64(value) {}
    nxGenericBitMask64& operator=(const nxGenericBitMask64&) = default;
    using nxBitMask64::operator=;

    // Both generic masks answer with the one name; readers of logs and messages rely on it.
    std::string GetClassName() const override { return "nxGenericBitMask"; }
    using nxBitMask64::SetBits;
    // Takes the flags of `bits` and leaves out its marks, as nxGenericBitMask does.
    void SetBits(const nxBitMask64& bits) override;
};
