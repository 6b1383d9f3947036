#pragma once

#include "base/values/nxExactAmount.h"

// What an adjustment did to a position. A value.
struct nxAdjusted
{
    // Money: funding or dividend that was paid to it, below 0 by it; what a split paid for a part of a lot.
    // Of a roll what the position costs more in the new contract, which is no money.
    nxExactAmount amount;
    long long lots = 0;  // that are open now
    bool hasPosition = false;

    nxAdjusted& operator+=(const nxAdjusted& other)
    {
        amount += other.amount;
        lots += other.lots;
        hasPosition = hasPosition || other.hasPosition;
        return *this;
    }
};
