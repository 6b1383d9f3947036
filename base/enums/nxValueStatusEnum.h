#pragma once

#include "base/enums/nxEnumRange.h"

// Whether a value is there, absent (null), or left alone by an update (no-change).
class nxValueStatusEnum final : public nxEnumRange<nxValueStatusEnum, 240, 244>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxValueStatusEnum"; }
};
