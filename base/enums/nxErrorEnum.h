#pragma once

#include "base/enums/nxEnumRange.h"

// The result of every operation that can fail: 0 is success, any other value says why not. The long
// description tells a person what was wrong.
class nxErrorEnum final : public nxEnumRange<nxErrorEnum, 999999, 2000000>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxErrorEnum"; }

    // True for success.
    bool IsSuccess() const { return GetValue() == nxEnum_Undefined; }
};
