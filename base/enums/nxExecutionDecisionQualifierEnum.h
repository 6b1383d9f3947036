#pragma once

#include "base/enums/nxEnumRange.h"

// Who decided on the execution, for regulatory reports.
class nxExecutionDecisionQualifierEnum final : public nxEnumRange<nxExecutionDecisionQualifierEnum, 480, 490>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxExecutionDecisionQualifierEnum"; }
};
