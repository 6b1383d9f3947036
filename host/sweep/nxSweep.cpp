#include "host/sweep/nxSweep.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/results/nxMeasures.h"
#include "host/run/nxRunVariant.h"
#include "host/sweep/nxCovarianceSearch.h"
#include "host/sweep/nxSweepFacts.h"
#include "host/sweep/nxSweepIdentity.h"
#include "host/sweep/nxSweepSummary.h"
#include "host/sweep/nxSweepTrial.h"
#include "host/sweep/nxTreeParzenSearch.h"

namespace {

using Role = nxSweepPart::Role;

constexpr std::size_t MostPoints = 1'000'000;  // all are kept in memory, some kilobytes each

}  // namespace

nxSweep::nxSweep(nxSweepOptions options, std::ostream& out, std::ostream& err)
    : _options(std::move(options)),
      _out(out),
      _err(err),
      _crew(_options.crew, [this](const nxSweepTask& task, nxRunOptions& made) { return _Make(task, made); }),
      _progress(err, _options.showsProgress)
{
}

nxRunResult nxSweep::Run()
{
    Fault fault = _RunAll();
    _progress.Erase();
    if (const Fault lost = _store.Save(); lost && !fault && !_options.isDry && !_options.isCount)
        fault = lost;
    if (fault) {
        _err << "algoserver sweep: " << *fault << "\n";
        return nxRunResult::InputFailed;
    }
    if (_options.isDry || _options.isCount) return nxRunResult::Done;
    if (_IsInterrupted())
        _err << fmt::format("interrupted; the same command goes on from {}\n", _options.file);
    const bool isNothingDone = !_IsSlice() && std::ranges::all_of(_table.outcomes, [](const auto& entry) {
        return entry.second.HasFailed();
    });
    return _IsInterrupted() || isNothingDone ? nxRunResult::ScriptFailed : nxRunResult::Done;
}

nxSweep::Fault nxSweep::_RunAll()
{
    Fault fault = _MakePlan();
    if (!fault && !_options.isCount) fault = _Open();
    if (!fault) fault = _ListPoints();
    if (!fault && _options.isCount) {
        _out << (_table.points.empty() ? _table.plan.GetRuns() : _table.points.size()) << "\n";
        return std::nullopt;
    }
    if (!fault && !_options.isDry) fault = _TakeSlices();
    if (!fault) fault = _Try();
    if (!fault && _options.isDry) return _TellDryRun();
    // It was interrupted before anything was known.
    if (!fault && _table.parts.empty()) return fault;
    if (!fault) fault = _RunPoints();
    if (!fault && !_IsSlice() && !_IsInterrupted()) fault = _RunBest();
    if (!fault) _Tell();
    return fault;
}

bool nxSweep::_IsInterrupted() const
{
    return _options.crew.interrupted != nullptr && _options.crew.interrupted->load();
}

nxSweep::Fault nxSweep::_MakePlan()
{
    if (Fault fault = nxSweepFacts::MakePlan(_options.entries, _options.objective, _table.plan)) return fault;
    if (_IsSearch() && _table.plan.GetSplits().HasSplits())
        return "--search looks at all the data at once; with walk or folds take a grid, random or sobol";
    if (_IsSearch() && _IsSlice())
        return "--search needs the results of earlier runs, which other slices have; take random or sobol";
    return std::nullopt;
}

nxSweep::Fault nxSweep::_Open()
{
    std::vector<nxRunOptions> all;
    if (Fault fault = _runs.GetAll(all)) return fault;
    if (all.front().capital.IsValid()) _table.capital = all.front().capital.GetAsDouble();
    if (_options.isDry && !_options.wantsIdentity) return std::nullopt;
    _identity = nxSweepIdentity::Make(_table.plan, all);
    if (_options.isDry) return std::nullopt;
    if (Fault fault = _store.Open(_options.file)) return fault;
    // Of one that ended before its first result there is nothing to lose.
    if (!_store.IsNew() && (_options.restarts || !_store.HasRuns())) _store.Clear();
    if (_store.IsNew()) return _WriteFacts();
    if (Fault fault = _CheckIdentity()) return fault;
    if (_options.triesFailedAgain) _store.ForgetFailures();
    if (Fault fault = _store.Read(_table)) return fault;
    _table.points.clear();  // they are listed anew, with all that belongs to them
    return std::nullopt;
}

nxSweep::Fault nxSweep::_CheckIdentity()
{
    std::map<std::string, std::string> facts = _store.GetFacts();
    std::string change = nxSweepIdentity::FindChange(facts["identity"], _identity);
    if (change.empty() && facts["currency"] != _options.crew.worker.currency) change = "--currency";
    if (change.empty()) return std::nullopt;
    return fmt::format(
        "{}: holds the results of another sweep: {} has changed since. --restart loses them and begins anew; "
        "-o "
        "names another file",
        _options.file, change);
}

nxSweep::Fault nxSweep::_WriteFacts()
{
    _store.SetFact("identity", _identity);
    _store.SetFact("currency", _options.crew.worker.currency);
    _store.SetFact("program", "algoserver " NX_VERSION);
    _store.SetFact("plan", nxSweepFacts::PackEntries(_options.entries));
    _store.SetFact("objective", _options.objective);
    _store.SetFact(
        "command",
        nlohmann::json(_options.command).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    if (_table.capital) _store.SetFact("capital", fmt::format("{}", *_table.capital));
    return _store.Save();
}

// Those of a search come while it goes on.
nxSweep::Fault nxSweep::_ListPoints()
{
    if (_IsSearch()) return std::nullopt;
    nxPlanPoints points(_table.plan);
    if (points.GetGridSize() != 0 && _table.plan.GetMethod() == nxPlan::Method::Grid &&
        points.CountAllowed() > MostPoints)
        return fmt::format("the plan has {} combinations; --random or --sobol takes some of them",
                           points.CountAllowed());
    for (nxPlanPoint point; points.Next(point);) {
        if (_table.points.size() == MostPoints)
            return fmt::format("the plan has more than {} points", MostPoints);
        _table.points.push_back(point);
    }
    if (_table.points.empty()) return "the plan has no run: its conditions leave nothing";
    // What is wrong with a value is to be known before anything is run.
    constexpr std::size_t mostTried = 10'000;
    for (std::size_t i = 0; i < std::min(_table.points.size(), mostTried); ++i) {
        nxRunOptions options;
        if (Fault fault = _runs.Get(_table.points[i], options)) return fault;
    }
    // Those of a slice would be the same in each.
    if (_options.isDry || _options.isCount || _IsSlice() || _store.CountPoints() != 0) return std::nullopt;
    for (const nxPlanPoint& point : _table.points)
        _store.AddPoint(point, _table.plan);
    return std::nullopt;
}

// The runs of a trial count as the first ones where they are over the same data.
nxSweep::Fault nxSweep::_Try()
{
    if (!_table.parts.empty()) return std::nullopt;
    nxSweepTrial trial(_table, _crew, [this] { _progress.Show("the first run"); });
    if (Fault fault =
            trial.Run(_GetSliceBegin(_options.slice), _GetSliceBegin(_options.slice + 1), _IsSlice()))
        return fault;
    if (_IsInterrupted()) return std::nullopt;
    // A slice has but some of the runs; who cut it has looked.
    if (!trial.GetUnread().empty() && !_options.allowsUnread && !_IsSlice())
        return fmt::format(
            "no script reads the parameter {}; is it spelled otherwise? --allow-unread goes on all the same",
            trial.GetUnread().front());
    _trial = trial.GetFirst();
    const bool needsDays = _table.plan.GetSplits().NeedDays();
    nxDaySpan data;
    if (needsDays && _trial) data = {_trial->days.front(), _trial->days.back() + 1};
    if (Fault fault = _MakeParts(data); fault || _options.isDry) return fault;
    for (const nxSweepPart& part : _table.parts)
        _store.AddPart(part);
    if (!needsDays && !_IsSearch())
        for (const auto& [task, outcome] : trial.GetOutcomes())
            _Take(task, outcome);
    return std::nullopt;
}

nxSweep::Fault nxSweep::_MakeParts(nxDaySpan data)
{
    if (!_table.plan.GetSplits().NeedDays()) {
        _table.parts = {nxSweepPart{}};
        return std::nullopt;
    }
    nxTimeSplits::Parts parts;
    if (Fault fault = _table.plan.GetSplits().Split(data, parts)) return fault;
    for (std::size_t i = 0; i < parts.splits.size(); ++i) {
        const nxTimeSplit& split = parts.splits[i];
        for (const nxDaySpan& span : split.train)
            _table.parts.push_back({split.test.IsEmpty() ? Role::Whole : Role::Train, i, span, ""});
        if (!split.test.IsEmpty()) _table.parts.push_back({Role::Test, i, split.test, ""});
    }
    if (!parts.holdout.IsEmpty()) _table.parts.push_back({Role::Holdout, 0, parts.holdout, ""});
    return std::nullopt;
}

nxSweep::Fault nxSweep::_TakeSlices()
{
    for (const std::string& file : _options.taken) {
        nxSweepStore slice;
        if (Fault fault = slice.Open(file)) return fault;
        const std::string change =
            nxSweepIdentity::FindChange(slice.GetFacts()["identity"], _store.GetFacts()["identity"]);
        if (!change.empty()) return fmt::format("{}: is a part of another sweep: {} differs", file, change);
        nxSweepTable table;
        table.plan = _table.plan;
        if (Fault fault = slice.Read(table)) return fault;
        if (_table.parts.empty())
            for (const nxSweepPart& part : table.parts)
                _AddPart(part);
        for (auto& [task, outcome] : table.outcomes)
            if (!_table.outcomes.contains(task)) _Take(task, std::move(outcome));
    }
    return _lost;
}

nxSweep::Fault nxSweep::_RunPoints()
{
    if (_IsSearch()) return _Search();
    std::vector<nxSweepTask> tasks;
    const std::size_t from = _GetSliceBegin(_options.slice), to = _GetSliceBegin(_options.slice + 1);
    for (std::size_t part = 0; part < _table.parts.size(); ++part)
        if (_table.parts[part].role <= Role::Test)
            for (std::size_t point = from; point < to; ++point)
                tasks.push_back({point, part});
    return _RunTasks(std::move(tasks));
}

std::unique_ptr<nxSearch> nxSweep::_MakeSearch() const
{
    constexpr std::size_t generation = 8;  // by which results cannot depend on the number of processes
    const nxPlan& plan = _table.plan;
    if (plan.GetMethod() == nxPlan::Method::TreeParzen)
        return std::make_unique<nxTreeParzenSearch>(plan.GetDimensions(), generation, plan.GetSeed());
    return std::make_unique<nxCovarianceSearch>(plan.GetDimensions(), generation, plan.GetSeed());
}

// What was run before is told to the search again, and so it comes to where it was.
nxSweep::Fault nxSweep::_Search()
{
    constexpr std::size_t mostGenerations = 100'000;
    const std::unique_ptr<nxSearch> search = _MakeSearch();
    const std::size_t wanted = _table.plan.GetRuns();
    std::map<std::vector<std::string>, std::size_t> known;  // points by their values
    for (std::size_t i = 0; known.size() < wanted && i < mostGenerations && !_IsInterrupted(); ++i) {
        const nxSearch::Points shares = search->Ask();
        std::vector<std::optional<std::size_t>> points(shares.size());
        std::vector<nxSweepTask> tasks;
        for (std::size_t j = 0; j < shares.size(); ++j) {
            auto point = nxPlanPoints::MakePoint(_table.plan, shares[j]);
            if (!point || (known.size() >= wanted && !known.contains(point->values))) continue;
            const auto [place, isNew] = known.try_emplace(point->values, known.size());
            points[j] = place->second;
            point->number = place->second;
            if (!isNew) continue;
            _AddPoint(*point);
            tasks.push_back({place->second, 0});
        }
        if (Fault fault = _RunTasks(std::move(tasks))) return fault;
        if (_IsInterrupted()) break;
        for (std::size_t j = 0; j < shares.size(); ++j)
            search->Tell(
                j, points[j] ? _table.GetObjective(*points[j], 0) : std::numeric_limits<double>::quiet_NaN());
    }
    return std::nullopt;
}

void nxSweep::_AddPoint(const nxPlanPoint& point)
{
    _table.points.push_back(point);
    if (_store.CountPoints() < _table.points.size()) _store.AddPoint(point, _table.plan);
}

// The held-out end, once, and other models: for the best alone.
nxSweep::Fault nxSweep::_RunBest()
{
    const nxSweepJudge judge(_table);
    const auto best = judge.GetBest();
    if (!best || judge.Count(nxSweepJudge::State::Missing) != 0) return std::nullopt;
    nxRunOptions own;
    if (Fault fault = _runs.Get(_table.points[*best], own)) return fault;
    nxRunReach reach;
    nxDaySpan span;
    for (const auto& [task, outcome] : _table.outcomes) {
        if (task.point != *best) continue;
        reach.hasBooks = reach.hasBooks || outcome.hasBooks;
        reach.hasBars = reach.hasBars || outcome.hasBars;
    }
    for (const nxSweepPart& part : _table.parts)
        if (part.role <= Role::Test && !part.span.IsEmpty())
            span = span.IsEmpty()
                       ? part.span
                       : nxDaySpan{std::min(span.from, part.span.from), std::max(span.to, part.span.to)};
    _variants = {{"as run", own.exchange, own.feedLatency, own.products}};
    for (nxRunVariant& variant : nxRunVariant::GetForBest(own, reach))
        _variants.push_back(std::move(variant));
    for (const nxRunVariant& variant : _variants)
        _AddPart({Role::Variant, 0, span, variant.name});
    std::vector<nxSweepTask> tasks;
    for (std::size_t part = 0; part < _table.parts.size(); ++part)
        if (_table.parts[part].role > Role::Test) tasks.push_back({*best, part});
    return _RunTasks(std::move(tasks));
}

void nxSweep::_AddPart(nxSweepPart part)
{
    if (std::ranges::find(_table.parts, part) != _table.parts.end()) return;
    _store.AddPart(part);
    _table.parts.push_back(std::move(part));
}

nxSweep::Fault nxSweep::_Make(const nxSweepTask& task, nxRunOptions& options)
{
    const nxSweepPart& part = _table.parts[task.part];
    Fault fault = _runs.Get(_table.points[task.point], part, options);
    const auto variant = std::ranges::find(_variants, part.name, &nxRunVariant::name);
    if (part.role == Role::Variant && variant != _variants.end()) variant->Apply(options);
    return fault;
}

nxSweep::Fault nxSweep::_RunTasks(std::vector<nxSweepTask> tasks)
{
    std::erase_if(tasks, [this](const nxSweepTask& task) { return _table.outcomes.contains(task); });
    _wanted += tasks.size();
    const Fault fault = _crew.Run(
        tasks,
        [this](const nxSweepTask& task, nxSweepOutcome outcome) {
            ++_done;
            _failed += outcome.HasFailed() ? 1 : 0;
            _Take(task, std::move(outcome));
        },
        [this] { _ShowProgress(); });
    return fault ? fault : _lost;
}

void nxSweep::_Take(const nxSweepTask& task, nxSweepOutcome outcome)
{
    _store.AddRun(task, outcome);
    _table.outcomes[task] = std::move(outcome);
    const double value = _table.GetObjective(task.point, task.part);
    if (_table.parts[task.part].role <= Role::Train && !std::isnan(value) && !(value <= _bestSoFar)) {
        _bestSoFar = value;
        _pointOfBest = task.point;
    }
    const auto now = std::chrono::steady_clock::now();
    if (now - _saved < std::chrono::milliseconds(500)) return;
    _saved = now;
    _lost = _store.Save();
}

void nxSweep::_ShowProgress()
{
    if (!_progress.IsEnabled()) return;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - _start).count();
    const double rate = static_cast<double>(_done) / seconds;
    std::string line = fmt::format("{} of {} runs", _done, _wanted);
    if (_failed != 0) line += fmt::format(", {} failed", _failed);
    if (_done != 0)
        line += fmt::format(", {:.1f} a second, {:.0f} s left", rate,
                            static_cast<double>(_wanted - _done) / rate);
    if (!std::isnan(_bestSoFar))
        line += "; best " + nxSweepSummary::DescribeBest(_table, _pointOfBest, _bestSoFar);
    _progress.Show(line);
}

nxSweep::Forecast nxSweep::_MakeForecast() const
{
    const auto isForAll = [](const nxSweepPart& part) { return part.role <= Role::Test; };
    return {.points = _IsSearch() ? _table.plan.GetRuns() : _table.points.size(),
            .parts = static_cast<std::size_t>(std::ranges::count_if(_table.parts, isForAll)),
            .secondsOfRun = _trial ? _trial->seconds : 0.0,
            .memoryOfRun = _trial ? _trial->memory : 0,
            .identity = _identity};
}

nxSweep::Fault nxSweep::Foresee(Forecast& forecast)
{
    Fault fault = _MakePlan();
    if (!fault && _IsSearch())
        fault = "--search needs the results of earlier runs, which other tasks have; take random or sobol";
    if (!fault) fault = _Open();
    std::error_code ignored;
    if (!fault && !_options.restarts && std::filesystem::exists(_options.file, ignored)) {
        fault = _store.Open(_options.file);
        if (!fault && _store.HasRuns()) fault = _CheckIdentity();
        _store.Close();
    }
    if (!fault) fault = _ListPoints();
    if (!fault) fault = _Try();
    _progress.Erase();
    forecast = _MakeForecast();
    return fault;
}

nxSweep::Fault nxSweep::_TellDryRun()
{
    const Forecast forecast = _MakeForecast();
    nxSweepSummary::WritePlan(_out, _table,
                              {.points = forecast.points,
                               .parts = forecast.parts,
                               .workers = _options.crew.workers,
                               .secondsOfRun = forecast.secondsOfRun,
                               .memoryOfRun = forecast.memoryOfRun});
    return std::nullopt;
}

void nxSweep::_Tell()
{
    _progress.Erase();
    if (_IsSlice()) {
        _out << fmt::format("slice {} of {}: {} runs done, {} of them failed\n", _options.slice,
                            _options.slices, _table.outcomes.size(),
                            std::ranges::count_if(
                                _table.outcomes, [](const auto& entry) { return entry.second.HasFailed(); }));
        return;
    }
    const nxSweepJudge judge(_table);
    _progress.Show("how far the best may be luck");  // for thousands of runs that takes a while
    const nxLuckReport luck = judge.FindLuck(_table.plan.GetSeed());
    _progress.Erase();
    nxSweepSummary::Write(_out, _table, judge, luck);
}
