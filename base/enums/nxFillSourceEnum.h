#pragma once

#include "base/enums/nxEnumRange.h"

// Where a fill came from.
class nxFillSourceEnum final : public nxEnumRange<nxFillSourceEnum, 430, 450>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxFillSourceEnum"; }
};
