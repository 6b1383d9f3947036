#pragma once

#include <optional>
#include <span>
#include <vector>

#include "host/sweep/nxDimension.h"

// How the runs around the best one do: a peak that stands alone is mostly luck, since what works works about
// as well with a little more or less. Neighbours are the points one step away in one dimension of ascending
// numbers, all else equal.
struct nxNeighbours
{
    std::size_t count = 0;  // those with a value
    double mean = 0.0, worst = 0.0;
    // (mean of the neighbours - median of all) / (best - median of all): 1 on a plateau, 0 where the
    // neighbours are no better than half of all points, below where they are worse. Not a number where all
    // are the same.
    double stability = 0.0;

    // `places` has the places of the values of each point, which all differ, and `values` what is the higher
    // the better, not a number where there is none. None without a best or without a neighbour of it. Points
    // with the highest value are the best in their order.
    static std::optional<nxNeighbours> Find(const std::vector<nxDimension>& dimensions,
                                            const std::vector<std::vector<unsigned long long>>& places,
                                            std::span<const double> values);
};

// How far the order of one row of numbers tells that of another, from -1 to 1: the correlation of the ranks,
// ties in the middle. C. Spearman, "The Proof and Measurement of Association between Two Things", 1904. Pairs
// with what is not a number are left out; not a number for fewer than three pairs, and where one row is all
// the same.
double nxGetRankCorrelation(std::span<const double> a, std::span<const double> b);
