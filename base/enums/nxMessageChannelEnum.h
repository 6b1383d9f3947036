#pragma once

#include "base/enums/nxEnumRange.h"

// The channel a message travels on.
class nxMessageChannelEnum final : public nxEnumRange<nxMessageChannelEnum, 510, 530>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxMessageChannelEnum"; }
};
