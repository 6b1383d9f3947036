#pragma once

#include <cstddef>
#include <vector>

#include "host/market/nxProductDescription.h"

// The described strategies in an order in which each stands behind those that are its legs, and the cycle
// that is in the way of one. Products are named by their index; a leg that is not described counts for
// nothing.
struct nxStrategyOrder
{
    explicit nxStrategyOrder(const std::vector<nxProductDescription>& products);

    std::vector<std::size_t> strategies;
    std::vector<std::size_t> cycle;  // empty: there is none; else each is a strategy over the next one
};
