#pragma once

#include "base/enums/nxEnumRange.h"

// What happened to a single order of the exchange's book.
class nxMarketByOrderActionTypeEnum final : public nxEnumRange<nxMarketByOrderActionTypeEnum, 450, 460>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxMarketByOrderActionTypeEnum"; }
};
