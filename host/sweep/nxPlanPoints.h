#pragma once

#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "host/sweep/nxGrid.h"
#include "host/sweep/nxPermutation.h"
#include "host/sweep/nxPlan.h"
#include "host/sweep/nxSobolSequence.h"

// What one run is made with.
struct nxPlanPoint
{
    unsigned long long number = 0;    // of the combination in a grid, else of the draw: ascending, with gaps
    std::vector<std::string> values;  // of the dimensions in their order
    std::vector<unsigned long long> places;  // of the values; empty where a dimension has no count
};

// The runs of a plan, one after the other, without storing them: a grid by the combinations that its
// conditions let through; random draws and Sobol points until there are as many different ones as were asked
// for, or all that there are. The same plan gives the same points. Adaptive searches make their own. One
// thread at a time.
class nxPlanPoints
{
public:
    // It outlives this.
    explicit nxPlanPoints(const nxPlan& plan);

    // The next one. False: there is none.
    [[nodiscard]] bool Next(nxPlanPoint& point);
    // How many a grid has, and how many the conditions leave out. Walks through what the conditions name.
    unsigned long long CountAllowed() const { return _grid ? _grid->CountAllowed() : 0; }
    unsigned long long GetGridSize() const { return _grid ? _grid->GetSize() : 0; }
    // Of draws: those so far that the conditions refused.
    unsigned long long GetRefused() const { return _refused; }

    // The point at these shares of the ways through the dimensions, each from 0 to below 1. None where the
    // conditions refuse it.
    static std::optional<nxPlanPoint> MakePoint(const nxPlan& plan, const std::vector<double>& shares);

private:
    // Draws that bring no new point before a plan is taken to have no more.
    static constexpr unsigned long long MaxVain = 1'000'000;

    bool _NextCombination(nxPlanPoint& point);
    bool _NextDraw(nxPlanPoint& point);
    std::optional<nxPlanPoint> _Draw(unsigned long long number);
    nxPlanPoint _GetCombination(unsigned long long combination) const;

    const nxPlan& _plan;
    std::optional<nxGrid> _grid;  // none: a dimension has no count, or it would be too large
    std::optional<nxPermutation> _permutation;
    std::optional<nxSobolSequence> _sobol;
    std::unordered_set<unsigned long long> _seen;  // combinations of Sobol points
    unsigned long long _next = 0, _found = 0, _refused = 0;
};
