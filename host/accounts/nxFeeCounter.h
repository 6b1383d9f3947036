#pragma once

#include <unordered_map>

#include "host/accounts/nxFeeSchedule.h"

struct nxExchangeEvent;

// What the fills of one job in a product cost, one after the other: it counts the lots that decide the tier,
// and what each order has cost against the minimum. A value.
class nxFeeCounter
{
public:
    nxFeeCounter() = default;
    explicit nxFeeCounter(const nxFeeSchedule& schedule) : _schedule(schedule) {}

    // The fee of the next fill. The tier is the one reached before it; what is missing to the minimum comes
    // with the order's first fill, and later ones cost what goes beyond it.
    nxExactAmount Add(const nxExchangeEvent& fill, const nxDecimal& pointValue);

private:
    nxFeeSchedule _schedule;
    unsigned long long _traded = 0;
    long long _month = 0;  // in which, since year 0
    std::unordered_map<unsigned int, nxExactAmount>
        _orders;  // by number, without the minimum; if there is one
};
