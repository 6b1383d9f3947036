#pragma once

#include <vector>

#include "host/sweep/nxDimension.h"
#include "host/sweep/nxExpression.h"

// All combinations of the values of dimensions, as a row of numbers from 0 on, of which the last dimension
// changes fastest. Nothing is stored for a combination, so there may be any number that fits. A value, over
// dimensions and conditions that outlive it; any thread may ask it.
class nxGrid
{
public:
    // The conditions are over the dimensions in their order. Each dimension has a count.
    nxGrid(const std::vector<nxDimension>& dimensions, const std::vector<nxExpression>& conditions);

    static constexpr unsigned long long MaxSize = 1'000'000'000'000'000'000;
    // Whether the combinations can be counted: no dimension is without a count, and there are not more.
    static bool IsCountable(const std::vector<nxDimension>& dimensions);

    unsigned long long GetSize() const { return _size; }
    // The place of the value of a dimension in a combination.
    unsigned long long GetPlace(unsigned long long combination, std::size_t dimension) const
    {
        return combination / _strides[dimension] % _counts[dimension];
    }
    // The combination of places, one for each dimension.
    unsigned long long GetCombination(const std::vector<unsigned long long>& places) const;

    // The first combination, from that one on, that the conditions let through; the size when there is none.
    // What a condition refuses whatever the later dimensions are is passed in one step.
    unsigned long long FindAllowed(unsigned long long from) const;
    bool IsAllowed(unsigned long long combination) const { return FindAllowed(combination) == combination; }
    // How many the conditions let through. Only dimensions that hang together by conditions are walked
    // through; all others are multiplied.
    unsigned long long CountAllowed() const;

private:
    nxGrid(const std::vector<nxDimension>& dimensions, std::vector<const nxExpression*> conditions,
           std::vector<unsigned long long> counts);

    const std::vector<nxDimension>& _dimensions;
    std::vector<const nxExpression*> _conditions;  // by the last dimension that they name
    std::vector<unsigned long long> _counts, _strides;
    unsigned long long _size = 1;
};
