#pragma once

#include "base/enums/nxEnumRange.h"

// The kind of a product.
class nxProductTypeEnum final : public nxEnumRange<nxProductTypeEnum, 100, 200>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxProductTypeEnum"; }

    // The short code that begins a dotted product key ("F" for a future); empty for a mark.
    const char* GetAsCode() const;
};
