#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string>

#include "host/sweep/nxNeighbours.h"
#include "host/sweep/nxOverfitting.h"
#include "host/sweep/nxRealityCheck.h"

// How far the best run of a sweep may be luck: what the tests say, and one sentence that a person can act on.
// What is not known is empty or not a number.
struct nxLuckReport
{
    static constexpr std::size_t FewDays = 20;

    unsigned long long tried = 0;  // runs, failed ones too
    std::size_t days = 0;
    double sharpe = std::numeric_limits<double>::quiet_NaN();  // of a day, of the best
    double probabilistic = std::numeric_limits<double>::quiet_NaN();
    double deflated = std::numeric_limits<double>::quiet_NaN();
    double bestOfLuck = std::numeric_limits<double>::quiet_NaN();
    std::optional<nxOverfitting> overfitting;
    std::optional<nxRealityCheck> realityCheck;
    std::optional<nxNeighbours> neighbours;  // for the caller to find: returns do not tell it
    // Of in-sample and out-of-sample values of all runs; for the caller, too.
    double rankCorrelation = std::numeric_limits<double>::quiet_NaN();

    // What returns tell; `best` is the run that was chosen, below their count, which may be less than
    // `tried`.
    static nxLuckReport Make(const nxReturnMatrix& returns, std::size_t best, unsigned long long tried,
                             unsigned long long seed);

    // "The best of 200 runs ...". It is called more than luck when no known test speaks against it and the
    // two that need returns alone, the deflated Sharpe ratio and SPA, speak for it at 95 %.
    std::string GetVerdict() const;
};
