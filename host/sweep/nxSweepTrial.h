#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxSweepCrew.h"
#include "host/sweep/nxSweepTable.h"

// The first run of a sweep, which tells what is to be known before the others: which parameters the scripts
// read, how long a run takes and, where the time is to be parted, of which days the data are. Where one run
// does not tell, two more are made.
class nxSweepTrial
{
public:
    // Both outlive it. tick: while it runs.
    nxSweepTrial(nxSweepTable& table, nxSweepCrew& crew, std::function<void()> tick)
        : _table(table), _crew(crew), _tick(std::move(tick))
    {
    }

    // Over all the data, of the points from one on and up to another. mayFail: it is no fault where none goes
    // through. Null, or why the sweep cannot be made. The table stays as it is.
    [[nodiscard]] std::optional<std::string> Run(std::size_t from, std::size_t to, bool mayFail);

    // Of those that were run, by their points.
    const std::map<nxSweepTask, nxSweepOutcome>& GetOutcomes() const { return _outcomes; }
    // The first that went through; none: there is none.
    const std::optional<nxSweepOutcome>& GetFirst() const { return _first; }
    // What none of them has read.
    const std::vector<std::string>& GetUnread() const { return _unread; }

private:
    std::vector<nxSweepTask> _Choose(std::size_t from, std::size_t to) const;
    void _AddPointOfSearch();
    std::optional<std::string> _RunAll(const std::vector<nxSweepTask>& tasks);
    void _Take(const nxSweepOutcome& outcome);
    bool _NeedsDays() const { return _table.plan.GetSplits().NeedDays(); }

    nxSweepTable& _table;
    nxSweepCrew& _crew;
    const std::function<void()> _tick;
    std::map<nxSweepTask, nxSweepOutcome> _outcomes;
    std::optional<nxSweepOutcome> _first;
    std::vector<std::string> _unread;
    std::string _failure;
};
