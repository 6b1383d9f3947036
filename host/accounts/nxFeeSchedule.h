#pragma once

#include "base/values/nxExactAmount.h"

// What a product's fills cost, exactly: a sum for each lot, or a rate of the money that changes hands. A
// maker's fill took nothing from the shown market. Negative fees are rebates. A value.
struct nxFeeSchedule
{
    nxDecimal maker;  // null: none
    nxDecimal taker;
    bool isRate = false;  // 0.0002 is two hundredths of a percent

    nxExactAmount GetFee(bool isMaker, const nxDecimal& price, unsigned int volume,
                         const nxDecimal& pointValue = nxDecimalOne) const
    {
        const nxDecimal& fee = isMaker ? maker : taker;
        if (!isRate) return {fee, volume};
        // A price below zero costs what the same one above does.
        return nxExactAmount(price < nxDecimalZero ? -price : price, volume, pointValue) * fee;
    }
};
