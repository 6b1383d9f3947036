#pragma once

#include "base/enums/nxEnumRange.h"

// True or false with the marks of an enum. Its texts are TRUE and FALSE; the short forms true and false.
class nxBoolEnum final : public nxEnumRange<nxBoolEnum, 5000, 5003>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxBoolEnum"; }
};
