#pragma once

#include <memory>

#include "host/sweep/nxDimension.h"
#include "host/sweep/nxSearch.h"

// CMA-ES, the evolution strategy that learns how dimensions hang together: each generation is drawn from a
// normal distribution whose mean, width and covariance follow the better half of the one before. N. Hansen,
// "The CMA Evolution Strategy: A Tutorial", 2016 (arXiv:1604.00772), with weights above 0 only and its
// default parameters. For dimensions of ascending numbers.
//
// It begins in the middle with a deviation of 0.3. A point outside of 0 and 1 is mirrored at the border. Once
// the deviation is below a tenth of a step in each dimension, or 1e-9, it begins anew at a random mean.
class nxCovarianceSearch : public nxSearch
{
public:
    // A generation has at least 4 + 3 log(dimensions) points.
    nxCovarianceSearch(const std::vector<nxDimension>& dimensions, std::size_t generation,
                       unsigned long long seed);
    ~nxCovarianceSearch() override;

private:
    struct State;

    Points _Propose() override;
    void _Learn(const Points& points, const std::vector<double>& values) override;

    std::unique_ptr<State> _state;
};
