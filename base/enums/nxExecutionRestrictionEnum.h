#pragma once

#include "base/enums/nxEnumRange.h"

// The execution style of an order. A bracket's stop loss order is a stop or a trailing stop.
class nxExecutionRestrictionEnum final : public nxEnumRange<nxExecutionRestrictionEnum, 1050, 1100>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxExecutionRestrictionEnum"; }
};
