#pragma once

#include "base/enums/nxEnumRange.h"

// In which capacity a member trades, for regulatory reports.
class nxTradingCapacityEnum final : public nxEnumRange<nxTradingCapacityEnum, 460, 470>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxTradingCapacityEnum"; }
};
