#pragma once

#include "base/enums/nxEnumRange.h"

// The state of an order as last heard from the exchange.
class nxOrderStatusEnum final : public nxEnumRange<nxOrderStatusEnum, 1100, 1150>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxOrderStatusEnum"; }

    // True while the order stands in the market or is held back by it: working, partially filled, held. An
    // order that has not been acknowledged yet (pending) is not working.
    bool IsWorkingOrder() const
    {
        return GetValue() == nxOrderStatus_Working || GetValue() == nxOrderStatus_PartiallyFilled ||
               GetValue() == nxOrderStatus_Held;
    }
};
