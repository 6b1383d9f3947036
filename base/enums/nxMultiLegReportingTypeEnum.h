#pragma once

#include "base/enums/nxEnumRange.h"

// Whether a trade report stands for a single product, a leg or a whole strategy.
class nxMultiLegReportingTypeEnum final : public nxEnumRange<nxMultiLegReportingTypeEnum, 500, 510>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxMultiLegReportingTypeEnum"; }
};
