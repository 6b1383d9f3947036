#pragma once

#include "base/enums/nxEnumRange.h"

// How the legs of a strategy are put together.
class nxStrategyTypeEnum final : public nxEnumRange<nxStrategyTypeEnum, 200, 240>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxStrategyTypeEnum"; }
};
