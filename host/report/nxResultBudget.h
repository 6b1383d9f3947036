#pragma once

#include <cstddef>

#include "host/results/nxResultRun.h"

// How long the lists of a result document may be, so that its page stays below 8 MiB however many products,
// jobs and lines there are. A kind of list has one sum that all of them share: short ones are whole, and the
// long ones are equally long. A value.
struct nxResultBudget
{
    explicit nxResultBudget(const nxResult& result);

    std::size_t points;  // of a series: equity, prices or a chart line
    std::size_t fills;   // of a product
    std::size_t trips;   // of a job and currency, or of all jobs together
    std::size_t orders;  // the same
    std::size_t events;  // of an order
};

// The orders of a job and currency, or of all jobs together, that were kept.
std::vector<const nxResultOrder*> nxGetOrders(const nxResult& result, const nxResultData& data);
