#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/feed/nxFeedError.h"
#include "host/jobs/nxJobOptions.h"
#include "host/run/nxParameterChange.h"

// Gathers the parameter changes of a run, from files and one by one, and brings them into the order of their
// times; of one time, in the order in which they were added. A run has few of them, so they are read whole
// and refused before it begins. The jobs must have their first parameters, and outlive it.
//
// A file is CSV with the columns time, parameter, value and, where wanted, tag, in any order; plain, .gz or
// .zst, under the same rules for text and times as recorded data. A parameter is NAME or JOB/NAME. Its rows
// may stand in any order. Cells may stand in double quotes, two of which are one inside.
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
    struct Cell
    {
        std::string text;
        unsigned int column;  // 1-based
    };
    enum Column : std::size_t { Time, Parameter, Value, Tag, ColumnCount };

    bool _SplitRow(std::string_view line, std::vector<Cell>& cells);
    bool _ReadHeader(const std::vector<Cell>& cells, std::vector<Column>& columns);
    bool _ReadRow(const std::vector<Cell>& cells, const std::vector<Column>& columns);
    bool _Refuse(unsigned int column, const std::string& reason);

    const std::vector<nxJobOptions>& _jobs;
    std::vector<Placed> _changes;
    nxFeedError _error;  // file and line are those of the row that is read
};
