#pragma once

#include "base/enums/nxEnumRange.h"

// How a price goes to a tick. Nearest: the nearest multiple, halves away from zero.
class nxRoundingMethodEnum final : public nxEnumRange<nxRoundingMethodEnum, 7400, 7410>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxRoundingMethodEnum"; }
};
