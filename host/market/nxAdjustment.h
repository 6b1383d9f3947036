#pragma once

#include <string>

#include "base/values/nxDecimal.h"

enum class nxAdjustmentKind { Funding, Dividend, Split, Roll };

// What happens to those who hold a product, beside their trades. A value.
struct nxAdjustment
{
    long long time = 0;  // nanoseconds since 1970
    std::string product;
    nxAdjustmentKind kind = nxAdjustmentKind::Funding;
    // Funding: the part of the position's value that longs pay to shorts. Dividend: price points, paid to
    // longs by shorts. Roll: the new contract's price less the old one's.
    nxDecimal value;
    // Split: so many new lots for so many old ones; both from 1 to 1000000.
    long long newLots = 1;
    long long oldLots = 1;

    // The product goes on at other prices, so no order can stand.
    bool EndsOrders() const { return kind == nxAdjustmentKind::Split || kind == nxAdjustmentKind::Roll; }
    // What one of the prices from before is afterwards, rounded to ten places.
    nxDecimal GetPrice(const nxDecimal& price) const;
};

constexpr const char* nxGetName(nxAdjustmentKind kind)
{
    constexpr const char* names[] = {"funding", "dividend", "split", "roll"};
    return names[static_cast<unsigned int>(kind)];
}
