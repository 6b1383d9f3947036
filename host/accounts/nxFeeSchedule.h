#pragma once

#include <algorithm>

#include "base/values/nxExactAmount.h"
#include "host/market/nxProductDescription.h"

// What a product's fills cost, exactly: a sum for each lot, or a rate of the money that changes hands. A
// maker's fill took nothing from the shown market. Negative fees are rebates. A value.
struct nxFeeSchedule
{
    nxDecimal maker;  // null: none
    nxDecimal taker;
    bool isRate = false;           // 0.0002 is two hundredths of a percent
    nxDecimal minimum;             // of an order; null: none
    std::vector<nxFeeTier> tiers;  // in place of the first two, from their lots on; ascend
    bool isMonthly = false;        // these lots count from the begin of the month, else of the run

    nxFeeSchedule() = default;
    explicit nxFeeSchedule(const nxProductDescription& product)
        : maker(product.makerFee),
          taker(product.takerFee),
          isRate(product.feeIsRate),
          minimum(product.minimumFee),
          tiers(product.feeTiers),
          isMonthly(product.feeTiersByMonth)
    {
    }

    // traded: lots that count for the tiers, before this fill.
    nxExactAmount GetFee(bool isMaker, const nxDecimal& price, unsigned int volume,
                         const nxDecimal& pointValue = nxDecimalOne, unsigned long long traded = 0) const
    {
        const auto above = std::ranges::upper_bound(tiers, traded, {}, &nxFeeTier::from);
        const nxFeeTier tier = above == tiers.begin() ? nxFeeTier{0, maker, taker} : *(above - 1);
        const nxDecimal& fee = isMaker ? tier.makerFee : tier.takerFee;
        if (!isRate) return {fee, volume};
        // A price below zero costs what the same one above does.
        return nxExactAmount(price < nxDecimalZero ? -price : price, volume, pointValue) * fee;
    }
};
