#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/run/nxRunOptions.h"
#include "host/sweep/nxSweepTable.h"

// What each run of a sweep is made with. Used on one thread.
class nxSweepRuns
{
public:
    // The options of a run with these in place of those that all runs have, by their long names. Null, or
    // what is wrong.
    using Make = std::function<std::optional<std::string>(
        const std::vector<std::pair<std::string, std::string>>& options, nxRunOptions& made)>;

    // The plan outlives it.
    nxSweepRuns(const nxPlan& plan, Make make) : _plan(plan), _make(std::move(make)) {}

    // Null, or what is wrong with a value.
    [[nodiscard]] std::optional<std::string> Get(const nxPlanPoint& point, nxRunOptions& options);
    // The same over a part of the data. A variant's models are not set.
    [[nodiscard]] std::optional<std::string> Get(const nxPlanPoint& point, const nxSweepPart& part,
                                                 nxRunOptions& options);
    // Those of all runs together, and with each single value of the options that runs differ in.
    [[nodiscard]] std::optional<std::string> GetAll(std::vector<nxRunOptions>& all);

private:
    using Values = std::vector<std::pair<std::string, std::string>>;

    static constexpr std::size_t MostKept = 256;

    std::optional<std::string> _Find(const Values& values, const nxRunOptions*& found);

    const nxPlan& _plan;
    const Make _make;
    std::map<Values, nxRunOptions> _made;  // by what is in place of the usual
};
