#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/feed/nxCsvTable.h"
#include "host/jobs/nxJobOptions.h"
#include "host/run/nxParameterChange.h"

// Gathers the parameter changes of a run, from files and one by one, and brings them into the order of their
// times; of one time, in the order in which they were added. A run has few of them, so they are read whole
// and refused before it begins. The jobs must have their first parameters, and outlive it.
//
// A file is CSV with the columns time, parameter, value and, where wanted, tag. A parameter is NAME or
// JOB/NAME. Its rows may stand in any order.
class nxParameterEvents
{
public:
    explicit nxParameterEvents(const std::vector<nxJobOptions>& jobs) : _jobs(jobs) {}

    // Each false: GetError() tells why and where.
    [[nodiscard]] bool AddFile(const std::string& path);
    // "TIME" and "[JOB/]NAME=VALUE".
    [[nodiscard]] bool Add(const std::string& time, const std::string& text);
    // The changes by time, if each value fits the parameter as it stands then.
    [[nodiscard]] bool Finish(std::vector<nxParameterChange>& changes);

    const nxFeedError& GetError() const { return _error; }

private:
    struct Placed
    {
        nxParameterChange change;
        nxFeedError place;  // of its value
    };

    bool _ReadRow(nxCsvTable& table);
    bool _Refuse(const std::string& reason);

    const std::vector<nxJobOptions>& _jobs;
    std::vector<Placed> _changes;
    nxFeedError _error;
};
