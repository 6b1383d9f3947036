#pragma once

#include "base/enums/nxEnumRange.h"

// What a client's identification stands for, for regulatory reports.
class nxClientIDQualifierEnum final : public nxEnumRange<nxClientIDQualifierEnum, 470, 480>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxClientIDQualifierEnum"; }
};
