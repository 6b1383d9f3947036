#pragma once

#include "base/enums/nxEnumRange.h"

// What an nxPriceTradeVolumes does to the one it updates; see nxPriceTradeVolumes::ApplyUpdate.
class nxPriceTradeVolumesUpdateTypeEnum final
    : public nxEnumRange<nxPriceTradeVolumesUpdateTypeEnum, 320, 330>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxPriceTradeVolumesUpdateTypeEnum"; }
};
