#pragma once

#include "base/enums/nxEnumRange.h"

// Whether an order has a limit price.
class nxOrderTypeEnum final : public nxEnumRange<nxOrderTypeEnum, 1000, 1050>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxOrderTypeEnum"; }
};
