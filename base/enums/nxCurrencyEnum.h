#pragma once

#include "base/enums/nxEnumRange.h"

// A currency by its ISO 4217 code, and the digital currencies that products are quoted in.
class nxCurrencyEnum final : public nxEnumRange<nxCurrencyEnum, 10000, 10500>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxCurrencyEnum"; }
};
