#pragma once

#include "base/enums/nxEnumRange.h"

// The value type of an algorithm parameter.
class nxVorantParameterTypeEnum final : public nxEnumRange<nxVorantParameterTypeEnum, 9600, 9609>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxVorantParameterTypeEnum"; }
};
