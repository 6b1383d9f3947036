#pragma once

#include "base/enums/nxEnumRange.h"

// The outcome of one order transaction.
class nxOrderTransactionStatusEnum final : public nxEnumRange<nxOrderTransactionStatusEnum, 1150, 1200>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxOrderTransactionStatusEnum"; }
};
