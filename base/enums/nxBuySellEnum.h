#pragma once

#include "base/enums/nxEnumRange.h"

// The side of an order, a trade or a leg.
class nxBuySellEnum final : public nxEnumRange<nxBuySellEnum, 10, 13>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxBuySellEnum"; }
};
