#pragma once

#include <optional>

#include "host/sweep/nxReturnMatrix.h"

// How often choosing the best run fails on days that did not choose it: combinatorially symmetric
// cross-validation. D. H. Bailey, J. M. Borwein, M. Lopez de Prado and Q. J. Zhu, "The Probability of
// Backtest Overfitting", 2017.
//
// The days are cut into an even number of blocks. Each half of the blocks chooses the run with the highest
// Sharpe ratio, the other half ranks it among all runs. With rank r of n, 1 the worst and ties in the middle,
// w = r / (n + 1) and its logit is log(w / (1 - w)). A run that does not move in a half has the ratio 0
// there.
struct nxOverfitting
{
    static constexpr std::size_t Blocks = 16;  // 12,870 halves

    double probability = 0.0;  // share of the halves whose logit is at most 0
    double loss = 0.0;         // share of the halves whose chosen run has a ratio below 0 on the other half
    double meanLogit = 0.0;
    std::size_t halves = 0;

    // `blocks` is even and at most 24. None for fewer than two runs or two days a block; block i begins at
    // day i * days / blocks, rounded down.
    static std::optional<nxOverfitting> Find(const nxReturnMatrix& returns, std::size_t blocks = Blocks);
};
