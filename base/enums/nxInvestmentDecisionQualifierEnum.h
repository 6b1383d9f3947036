#pragma once

#include "base/enums/nxEnumRange.h"

// Who decided on the investment, for regulatory reports.
class nxInvestmentDecisionQualifierEnum final
    : public nxEnumRange<nxInvestmentDecisionQualifierEnum, 490, 500>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxInvestmentDecisionQualifierEnum"; }
};
