#pragma once

#include "base/enums/nxEnumRange.h"

// The period of a bar; its names are those that scripts use.
class nxTickDataPeriodEnum final : public nxEnumRange<nxTickDataPeriodEnum, 400, 430>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxTickDataPeriodEnum"; }
};
