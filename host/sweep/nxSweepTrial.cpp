#include "host/sweep/nxSweepTrial.h"

#include <algorithm>
#include <cmath>

using Fault = std::optional<std::string>;

// The points of a search are not known yet: some point that the conditions let through will do.
void nxSweepTrial::_AddPointOfSearch()
{
    constexpr double golden = 0.6180339887498949;
    constexpr int most = 1000;
    std::vector<double> shares(_table.plan.GetDimensions().size(), 0.5);
    for (int i = 1; i < most && _table.points.empty(); ++i) {
        if (const auto point = nxPlanPoints::MakePoint(_table.plan, shares)) _table.points.push_back(*point);
        for (std::size_t j = 0; j < shares.size(); ++j)
            shares[j] = std::fmod(i * golden * static_cast<double>(j + 1), 1.0);
    }
}

// The first, one in the middle, and the last.
std::vector<nxSweepTask> nxSweepTrial::_Choose(std::size_t from, std::size_t to) const
{
    std::vector<nxSweepTask> tasks;
    for (const std::size_t point : {from, (from + to) / 2, to - (to > from ? 1 : 0)})
        if (point < to && (tasks.empty() || tasks.back().point != point)) tasks.push_back({point, 0});
    return tasks;
}

Fault nxSweepTrial::Run(std::size_t from, std::size_t to, bool mayFail)
{
    const bool isSearch = _table.points.empty();
    if (isSearch) _AddPointOfSearch();
    _table.parts = {nxSweepPart{}};
    const std::vector<nxSweepTask> tasks = isSearch ? _Choose(0, _table.points.size()) : _Choose(from, to);
    Fault fault = _RunAll(tasks);
    _table.parts.clear();
    if (isSearch) _table.points.clear();
    if (fault || _first) return fault;
    if (tasks.empty() || _outcomes.empty() || (mayFail && !_NeedsDays())) return std::nullopt;
    if (!_failure.empty()) return "no run goes through: " + _failure;
    return "the runs end before the data, so that nobody knows how to part the time";
}

Fault nxSweepTrial::_RunAll(const std::vector<nxSweepTask>& tasks)
{
    for (const nxSweepTask& task : tasks) {
        const auto take = [this](const nxSweepTask& of, nxSweepOutcome outcome) {
            _outcomes[of] = std::move(outcome);
        };
        if (Fault fault = _crew.Run({task}, take, _tick)) return fault;
        const auto outcome = _outcomes.find(task);
        if (outcome == _outcomes.end()) return std::nullopt;  // it was interrupted
        _Take(outcome->second);
        if (_first && _first->days.empty() && _NeedsDays()) return "the data hold no rows";
        if (_first && _unread.empty()) break;
    }
    return std::nullopt;
}

void nxSweepTrial::_Take(const nxSweepOutcome& outcome)
{
    if (outcome.HasFailed()) {
        _failure = outcome.failure;
        return;
    }
    // One that ended by itself does not tell how far the data go.
    if (_NeedsDays() && outcome.end != "the data ended") return;
    if (!_first) {
        _first = outcome;
        _unread = outcome.unread;
    }
    std::erase_if(_unread, [&](const std::string& name) {
        return std::ranges::find(outcome.unread, name) == outcome.unread.end();
    });
}
