#pragma once

#include "base/enums/nxBitMask.h"

// A mask of 32 bits whose flags mean what its holder says.
class nxGenericBitMask : public nxBitMask
{
public:
    nxGenericBitMask() = default;
    nxGenericBitMask(const nxGenericBitMask&) = default;
    nxGenericBitMask(const nxBitMask& bits) : nxBitMask(bits) {}
    nxGenericBitMask(unsigned int value) : nxBitMask(value) {}
    nxGenericBitMask& operator=(const nxGenericBitMask&) = default;
    using nxBitMask::operator=;

    std::string GetClassName() const override { return "nxGenericBitMask"; }
    using nxBitMask::SetBits;
    // A generic mask takes flags only: the marks of `bits` are left out, so that gathering the flags of
    // several masks never turns the result into a mark.
    void SetBits(const nxBitMask& bits) override;

    using nxBitMask::GetLongDescription;
    using nxBitMask::GetShortDescription;
    // As the forms with a separator, which is a comma here.
    virtual std::string GetShortDescription() const;
    virtual std::string GetLongDescription() const;
};
