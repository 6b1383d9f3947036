#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxSweepTable.h"

class nxSweepStore;

// How a sweep is told in its file of results, beside its runs. Static functions only.
class nxSweepFacts
{
public:
    // objective: an expression of measures that is maximised where the entries name none.
    [[nodiscard]] static std::optional<std::string> MakePlan(const std::vector<nxPlanEntry>& entries,
                                                             const std::string& objective, nxPlan& plan);
    static std::string PackEntries(const std::vector<nxPlanEntry>& entries);
    // Null, or why the file cannot be read, with its path.
    [[nodiscard]] static std::optional<std::string> Read(nxSweepStore& store, nxSweepTable& table);
};
