#pragma once

#include "base/enums/nxEnumRange.h"

// The price of a leg from which a synthetic strategy's price is computed.
class nxSyntheticStrategyLegCalculationPriceTypeEnum final
    : public nxEnumRange<nxSyntheticStrategyLegCalculationPriceTypeEnum, 300, 320>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxSyntheticStrategyLegCalculationPriceTypeEnum"; }
};
