#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxPlan.h"
#include "host/sweep/nxPlanPoints.h"
#include "host/sweep/nxSweepOutcome.h"
#include "host/sweep/nxTimeSplits.h"

// A part of the data that points are run over, or, of the best one, another model.
struct nxSweepPart
{
    enum class Role : unsigned char { Whole, Train, Test, Holdout, Variant };

    Role role = Role::Whole;
    std::size_t split = 0;  // of a train and a test
    nxDaySpan span;         // empty: all the data
    std::string name;       // of a variant

    static const char* GetRoleName(Role role);
    bool operator==(const nxSweepPart&) const = default;
};

// One run of a sweep: which point over which part, as indices.
struct nxSweepTask
{
    std::size_t point = 0, part = 0;

    auto operator<=>(const nxSweepTask&) const = default;
};

// What a sweep makes, and what has come of it so far. Points and parts are in their order, whichever order
// they were run in.
struct nxSweepTable
{
    nxPlan plan;
    std::vector<nxPlanPoint> points;
    std::vector<nxSweepPart> parts;
    std::map<nxSweepTask, nxSweepOutcome> outcomes;
    std::optional<double> capital;

    const nxSweepOutcome* Find(std::size_t point, std::size_t part) const;
    // The best of a sweep is looked for by this. Not a number: no outcome, it failed, or a constraint does
    // not hold.
    double GetObjective(std::size_t point, std::size_t part) const;
    // Those of a role, and of one split, in their order.
    std::vector<std::size_t> GetParts(nxSweepPart::Role role, std::optional<std::size_t> split = {}) const;
    std::size_t GetSplitCount() const;
};
