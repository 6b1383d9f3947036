#pragma once

#include "base/enums/nxEnumRange.h"

// The kind of a parent order that works through child orders.
class nxSyntheticOrderTypeEnum final : public nxEnumRange<nxSyntheticOrderTypeEnum, 1200, 1250>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxSyntheticOrderTypeEnum"; }
};
