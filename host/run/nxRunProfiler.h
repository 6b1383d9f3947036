#pragma once

#include <deque>
#include <optional>
#include <string>

#include "host/feed/nxFeedProductTable.h"
#include "host/report/nxOutputFile.h"
#include "host/run/nxJobList.h"
#include "host/run/nxJobProfiler.h"

// Where the scripts of a run spend their instructions, time and memory: follows the jobs, and writes the
// page. There is one for a run that asks for it. Used on the run's thread; outlives the jobs.
class nxRunProfiler
{
public:
    static bool IsWanted(const nxRunOptions& options)
    {
        return !options.profileFile.empty() || options.profilesMemory;
    }

    explicit nxRunProfiler(const nxRunOptions& options) : _options(options) {}

    // Null, or why the file cannot be: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Open();
    // Before the scripts are loaded.
    void Follow(nxJobList& jobs);
    // The event is about to happen, or at that time something else that is due when it is null.
    void OnStep(const nxFeedEvent* event, long long time);
    // The run is about to end its jobs.
    void BeforeEnd(nxJobList& jobs);
    // Writes the page, and the memory to standard error. Null, or why the page is not whole.
    [[nodiscard]] std::optional<std::string> Write(nxJobList& jobs, const nxFeedProductTable& products,
                                                   nxRunOutput& output);

private:
    const nxRunOptions& _options;
    nxJobProfiler::Moment _moment;
    std::deque<nxJobProfiler> _jobs;
    nxOutputFile _page{"the profile"};
};
