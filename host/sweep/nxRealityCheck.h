#pragma once

#include <optional>

#include "host/sweep/nxReturnMatrix.h"

// How likely luck alone gives a best run as good as this one, with all that were tried taken into account:
// the means of resampled days, each less what it is expected to be, show what the best does when no run is
// any good. All runs see the same resamples, so that what hangs together stays so. 0 is what doing nothing
// makes.
//   White: the largest of sqrt(n) * mean against that of sqrt(n) * (resampled mean - mean).
//     H. White, "A Reality Check for Data Snooping", 2000.
//   SPA: the same with each mean divided by its deviation w, at least 0, against max(0, the largest of
//     sqrt(n) * (resampled mean - g) / w). Poor runs do not count: g is the mean, but 0 for runs with
//     sqrt(n) * mean / w < -sqrt(2 log log n) (consistent), or for all means below 0 (lower).
//     P. R. Hansen, "A Test for Superior Predictive Ability", 2005; w^2 by the closed form of the stationary
//     bootstrap with mean block length L, the autocovariances c(i) divided by n: c(0) +
//     2 * sum over i of ((n - i) / n * (1 - 1 / L)^i + i / n * (1 - 1 / L)^(n - i)) * c(i).
// A p-value is the share of the resamples that are at least as good. A run whose w is 0 does not count in
// SPA.
struct nxRealityCheck
{
    static constexpr std::size_t Resamples = 1000;

    double white = 1.0;
    double spa = 1.0;                       // consistent
    double spaLower = 1.0, spaUpper = 1.0;  // g of the bounds
    double whiteStatistic = 0.0, spaStatistic = 0.0;

    // None for fewer than ten days or no run. Takes about days * runs * resamples / 2 steps.
    static std::optional<nxRealityCheck> Find(const nxReturnMatrix& returns, unsigned long long seed,
                                              std::size_t resamples = Resamples);
};
