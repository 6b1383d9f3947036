#pragma once

#include "base/enums/nxEnumRange.h"

// The function code of a message, from which its subject is made.
class nxFunctionEnum final : public nxEnumRange<nxFunctionEnum, 100000, 200000>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxFunctionEnum"; }
};
