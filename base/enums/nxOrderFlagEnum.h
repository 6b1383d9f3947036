#pragma once

#include "base/enums/nxEnumRange.h"

// A remark that the exchange or a synthetic engine puts on an order.
class nxOrderFlagEnum final : public nxEnumRange<nxOrderFlagEnum, 8000, 8020>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxOrderFlagEnum"; }
};
