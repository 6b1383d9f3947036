#pragma once

#include "base/enums/nxEnumRange.h"

// The role of a child order under its synthetic parent.
class nxSyntheticChildOrderTypeEnum final : public nxEnumRange<nxSyntheticChildOrderTypeEnum, 1250, 1300>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxSyntheticChildOrderTypeEnum"; }
};
