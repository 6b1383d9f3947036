#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/nxSqliteDatabase.h"
#include "host/sweep/nxSweepTable.h"

// The file of a sweep's results: a SQLite database that other programs can read, too.
//   facts      name, value: what the sweep is; see nxSweepFacts
//   points     point, number, parameters: a JSON object of the values by their names
//   parts      part, role, split, first, last, name: days as YYYY-MM-DD, both included
//   runs       point, part, failure, ended, seconds, memory, books, bars, calendar, profits, and a column for
//              each measure
//   calendars  calendar, days: the days, since 1970, of the profits, both rows of doubles
// Used by one thread. What is added is on the disk after Save.
class nxSweepStore
{
public:
    static constexpr nxSqliteDatabase::Kind Kind = {0x6e785357, 1};  // "nxSW"

    // Makes the file where there is none. Null, or why it cannot be used, with its path. Who only looks at it
    // holds it for a moment, for which a sweep that begins waits: milliseconds.
    [[nodiscard]] std::optional<std::string> Open(const std::string& path, int patience = 2000);
    // It was made just now.
    bool IsNew() const { return _isNew; }
    const std::string& GetPath() const { return _path; }

    std::map<std::string, std::string> GetFacts();
    void SetFact(const std::string& name, const std::string& value);
    bool HasRuns() { return CountRuns() != 0; }
    unsigned long long CountRuns()
    {
        return static_cast<unsigned long long>(_database.GetNumber("SELECT count(*) FROM runs"));
    }
    std::size_t CountPoints() const { return static_cast<std::size_t>(_points); }
    // In their order.
    void AddPoint(const nxPlanPoint& point, const nxPlan& plan);
    void AddPart(const nxSweepPart& part);
    void AddRun(const nxSweepTask& task, const nxSweepOutcome& outcome);
    // Points, parts and outcomes of the table. Null, or why they cannot be read, with the path.
    [[nodiscard]] std::optional<std::string> Read(nxSweepTable& table);

    // Runs that failed are to be made again.
    void ForgetFailures();
    // Null, or why what was added is not there.
    [[nodiscard]] std::optional<std::string> Save();
    // Others may use the file again.
    void Close() { _database.Close(); }
    // All at once, in place of what was there.
    void Clear();

private:
    std::optional<std::string> _Prepare(int patience);
    void _MakeTables();
    long long _GetCalendar(const std::vector<long long>& days);
    void _ReadRuns(nxSweepTable& table);

    std::string _path;
    nxSqliteDatabase _database;
    bool _isNew = false;
    long long _points = 0, _parts = 0;                         // how many there are
    std::map<std::string, long long, std::less<>> _calendars;  // by their bytes
};
