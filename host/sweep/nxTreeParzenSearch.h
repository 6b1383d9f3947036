#pragma once

#include "host/results/nxSplitMix.h"
#include "host/sweep/nxDimension.h"
#include "host/sweep/nxSearch.h"

// Tree-structured Parzen estimator: of some draws from where the good points lie, each point of a generation
// is the one for which good points are likeliest against bad ones. J. Bergstra, R. Bardenet, Y. Bengio and B.
// Kegl, "Algorithms for Hyper-Parameter Optimization", 2011, 4. Any dimensions, lists of texts too.
//
// Good are the best 15 %. A dimension of ascending numbers has a normal distribution within 0 and 1 around
// each point, as wide as the farther of its two neighbours is away, from 1 / (1 + points), at least 0.01, to
// 1; and one of width 1 in the middle. Other dimensions have a weight for each value, its points and one
// more.
class nxTreeParzenSearch : public nxSearch
{
public:
    static constexpr std::size_t Startup = 20;  // random points before the first that are chosen
    static constexpr std::size_t Draws = 24;    // for each point

    nxTreeParzenSearch(const std::vector<nxDimension>& dimensions, std::size_t generation,
                       unsigned long long seed);

private:
    struct Axis  // a dimension
    {
        unsigned long long count;  // 0: any value
        bool isOrdered;

        // The middle of the value that a share falls on.
        double Snap(double share) const;
    };
    struct Density;

    Points _Propose() override;
    void _Learn(const Points& points, const std::vector<double>& values) override;
    std::vector<double> _Choose(const std::vector<Density>& good, const std::vector<Density>& bad);

    std::vector<Axis> _axes;
    std::size_t _generation;
    nxSplitMix _random;
    Points _points;  // all so far
    std::vector<double> _values;
};
