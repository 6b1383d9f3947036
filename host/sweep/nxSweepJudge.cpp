#include "host/sweep/nxSweepJudge.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "host/sweep/nxSharpeLuck.h"

namespace {

using Role = nxSweepPart::Role;

constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();

// By day. With capital a return is of the equity of the day before; where nothing is left there is none.
void AddReturns(const nxSweepOutcome& outcome, std::optional<double> capital,
                std::map<long long, double>& returns)
{
    double before = 0.0;
    for (std::size_t i = 0; i < outcome.days.size(); ++i) {
        const double profit = outcome.profits[i] - before;
        const double equity = capital.value_or(0.0) + before;
        before = outcome.profits[i];
        returns[outcome.days[i]] = !capital ? profit : equity > 0.0 ? profit / equity : 0.0;
    }
}

}  // namespace

nxSweepJudge::nxSweepJudge(const nxSweepTable& table)
    : _table(table),
      _wholes(table.GetParts(Role::Whole)),
      _tests(table.GetParts(Role::Test)),
      _points(table.points.size()),
      _splits(table.GetSplitCount())
{
    for (std::size_t point = 0; point < _points.size(); ++point)
        _JudgePoint(point);
    if (!_splits.empty()) {
        _JudgeSplits();
        return;
    }
    for (const Point& point : _points)
        _chosenBy.push_back(point.objective);
    _best = _FindHighest(_chosenBy);
}

void nxSweepJudge::_JudgePoint(std::size_t index)
{
    Point& point = _points[index];
    std::size_t missing = 0;
    for (const Role role : {Role::Whole, Role::Train, Role::Test})
        for (const std::size_t part : _table.GetParts(role)) {
            const nxSweepOutcome* const outcome = _table.Find(index, part);
            missing += outcome == nullptr ? 1 : 0;
            if (outcome != nullptr && outcome->HasFailed() && point.failure.empty())
                point.failure = outcome->failure;
        }
    if (!point.failure.empty()) {
        point.state = State::Failed;
        return;
    }
    if (missing != 0) return;
    if (_splits.empty()) {
        point.objective = _GetMean(index, Role::Whole, true);
        for (const std::size_t part : _wholes)
            _SampleHalves(point, *_table.Find(index, part));
    } else {
        point.objective = point.inSample = _GetMean(index, Role::Train, true);
        point.outOfSample = _GetMean(index, Role::Test, false);
    }
    point.state = std::isnan(point.objective) ? State::Constrained : State::Done;
}

// Without any split the days themselves are cut into two halves.
void nxSweepJudge::_SampleHalves(Point& point, const nxSweepOutcome& outcome) const
{
    std::map<long long, double> byDay;
    AddReturns(outcome, _table.capital, byDay);
    std::vector<double> returns;
    for (const auto& [day, value] : byDay)
        returns.push_back(value);
    const std::span<const double> all(returns);
    point.inSample = nxSharpeLuck::GetRatio(all.first(all.size() / 2));
    point.outOfSample = nxSharpeLuck::GetRatio(all.subspan(all.size() / 2));
}

// By the parts' days. isStrict: all of them are known; else those that are.
double nxSweepJudge::_GetMean(std::size_t point, Role role, bool isStrict,
                              std::optional<std::size_t> split) const
{
    double sum = 0.0, weights = 0.0;
    for (const std::size_t part : _table.GetParts(role, split)) {
        const nxDaySpan span = _table.parts[part].span;
        const double weight = span.IsEmpty() ? 1.0 : static_cast<double>(span.to - span.from);
        const double value = _table.GetObjective(point, part);
        if (std::isnan(value) && isStrict) return Unknown;
        if (std::isnan(value)) continue;
        sum += weight * value;
        weights += weight;
    }
    return weights > 0.0 ? sum / weights : Unknown;
}

std::optional<std::size_t> nxSweepJudge::_FindHighest(const std::vector<double>& values) const
{
    std::optional<std::size_t> highest;
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!std::isnan(values[i]) && (!highest || values[i] > values[*highest])) highest = i;
    return highest;
}

void nxSweepJudge::_JudgeSplits()
{
    for (std::size_t i = 0; i < _splits.size(); ++i) {
        Split& split = _splits[i];
        std::vector<double> trains;
        for (std::size_t point = 0; point < _points.size(); ++point)
            trains.push_back(_points[point].state == State::Failed ? Unknown
                                                                   : _GetMean(point, Role::Train, true, i));
        split.chosen = _FindHighest(trains);
        if (split.chosen) split.inSample = trains[*split.chosen];
        if (split.chosen) split.outOfSample = _GetMean(*split.chosen, Role::Test, true, i);
        _chosenBy = std::move(trains);
    }
    if (!_table.plan.GetSplits().IsWalk()) {
        _chosenBy.clear();
        for (const Point& point : _points)
            _chosenBy.push_back(point.state == State::Done ? point.outOfSample : Unknown);
    }
    _best = _FindHighest(_chosenBy);
}

std::size_t nxSweepJudge::Count(State state) const
{
    return static_cast<std::size_t>(std::ranges::count(_points, state, &Point::state));
}

std::pair<const char*, const char*> nxSweepJudge::GetSampleNames() const
{
    if (_splits.empty())
        return {"Sharpe ratio of the first half of the days", "Sharpe ratio of the second half of the days"};
    return {"mean of the trains", "mean of the tests"};
}

nxSweepJudge::Equity nxSweepJudge::_Join(const std::vector<nxSweepTask>& pieces) const
{
    Equity equity;
    double before = 0.0;
    for (const nxSweepTask& piece : pieces) {
        const nxSweepOutcome* const outcome = _table.Find(piece.point, piece.part);
        if (outcome == nullptr || outcome->HasFailed()) continue;
        for (std::size_t i = 0; i < outcome->days.size(); ++i) {
            equity.days.push_back(outcome->days[i]);
            equity.profits.push_back(before + outcome->profits[i]);
        }
        if (!equity.profits.empty()) before = equity.profits.back();
    }
    return equity;
}

nxSweepJudge::Equity nxSweepJudge::GetWalk() const
{
    std::vector<nxSweepTask> pieces;
    for (const std::size_t test : _tests)
        if (const auto chosen = _splits[_table.parts[test].split].chosen) pieces.push_back({*chosen, test});
    return _Join(pieces);
}

nxSweepJudge::Equity nxSweepJudge::GetEquity() const
{
    if (!_best) return {};
    if (!_wholes.empty()) return _Join({{*_best, _wholes.front()}});
    // The first of the variants is the run as it is.
    const std::vector<std::size_t> variants = _table.GetParts(Role::Variant);
    return variants.empty() ? Equity() : _Join({{*_best, variants.front()}});
}

std::map<long long, double> nxSweepJudge::_GetReturns(std::size_t point) const
{
    std::map<long long, double> returns;
    for (const std::size_t part : _splits.empty() ? _wholes : _tests)
        if (const nxSweepOutcome* const outcome = _table.Find(point, part))
            AddReturns(*outcome, _table.capital, returns);
    return returns;
}

nxLuckReport nxSweepJudge::FindLuck(unsigned long long seed) const
{
    nxLuckReport none;
    none.tried = _points.size() - Count(State::Missing);
    if (!_best) return none;
    std::vector<std::map<long long, double>> all;
    std::set<long long> days;
    std::size_t best = 0;
    std::vector<std::vector<unsigned long long>> places;
    std::vector<double> values, inSample, outOfSample;
    for (std::size_t i = 0; i < _points.size(); ++i) {
        const Point& point = _points[i];
        if (point.state != State::Done && point.state != State::Constrained) continue;
        if (i == *_best) best = all.size();
        all.push_back(_GetReturns(i));
        for (const auto& [day, value] : all.back())
            days.insert(day);
        places.push_back(_table.points[i].places);
        values.push_back(_chosenBy[i]);
        inSample.push_back(point.inSample);
        outOfSample.push_back(point.outOfSample);
    }
    nxReturnMatrix matrix(days.size(), all.size());
    std::size_t row = 0;
    for (const long long day : days) {
        for (std::size_t run = 0; run < all.size(); ++run)
            if (const auto found = all[run].find(day); found != all[run].end())
                matrix.At(row, run) = found->second;
        ++row;
    }
    nxLuckReport report = nxLuckReport::Make(matrix, best, none.tried, seed);
    const bool havePlaces = std::ranges::none_of(places, &std::vector<unsigned long long>::empty);
    if (havePlaces) report.neighbours = nxNeighbours::Find(_table.plan.GetDimensions(), places, values);
    report.rankCorrelation = nxGetRankCorrelation(inSample, outOfSample);
    return report;
}
