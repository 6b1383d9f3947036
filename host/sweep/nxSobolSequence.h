#pragma once

#include <memory>
#include <vector>

// The Sobol sequence: points that fill a unit cube more evenly than random ones. I. M. Sobol, "On the
// distribution of points in a cube and the approximate evaluation of integrals", 1967, with the direction
// numbers of S. Joe and F. Y. Kuo, "Constructing Sobol sequences with better two-dimensional projections",
// 2008, as Boost.Random holds them. The first point is the corner 0: it makes the first 2^k points even.
// One thread at a time.
class nxSobolSequence
{
public:
    static constexpr std::size_t MaxDimensions = 3667;
    static constexpr unsigned long long MaxPoints = 1ull << 32;

    explicit nxSobolSequence(std::size_t dimensions);
    // Scrambled by a random digital shift, which keeps how evenly the points lie: the bits of each dimension
    // are exchanged where a random number has ones. R. Cranley and T. N. L. Patterson, "Randomization of
    // Number Theoretic Methods for Multiple Integration", 1976, in base 2.
    nxSobolSequence(std::size_t dimensions, unsigned long long seed);
    ~nxSobolSequence();

    // A point by its number, below MaxPoints: coordinates above 0 and below 1, in the middle of 2^32 cells.
    const std::vector<double>& GetPoint(unsigned long long number);

private:
    struct Engine;

    std::unique_ptr<Engine> _engine;
    std::vector<unsigned int> _shifts;
    std::vector<double> _point;
};
