#include "host/run/nxRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <new>

#include "base/threads/nxStackThread.h"
#include "host/exchange/nxSimulatedExchange.h"
#include "host/feed/nxFeedTime.h"
#include "host/report/nxRunSummary.h"
#include "host/run/nxRunFollower.h"
#include "host/run/nxRunNotes.h"

using namespace std::chrono_literals;

namespace {

long long FloorSecond(long long time)
{
    const long long rest = time % nxTime::NanosecondsPerSecond;
    return time - (rest < 0 ? rest + nxTime::NanosecondsPerSecond : rest);
}

}  // namespace

nxRun::nxRun(nxRunOptions options, std::ostream& out, std::ostream& err)
    : _options(std::move(options)),
      _state(_options),
      _clock(
          _options.speed, [this] { return _state.IsEnding(); },
          [this] {
              _output.Flush();
              _output.ShowProgress(_source);
          }),
      _output(_state, _clock, out, err),
      _results(_state, _output),
      _watch({.pulse = _options.pulse,
              .limit = _options.isGuarded ? 0ns : _options.callbackLimit,
              .interrupted = _options.isGuarded ? nullptr : _options.interrupted,
              .isWatching = _options.blocks == nullptr && _options.follower == nullptr},
             [this](const nxCallWatch::Stall& stall) { _output.NoteStall(stall); }),
      _source(
          {.isLenient = _options.lenient,
           .barsBearStart = _options.barsBearStart,
           .barPeriods = _options.barPeriods,
           .form = _options.form,
           .roundsVolumes = _options.roundsVolumes,
           .lotSizes = _options.lotSizes,
           .begin = _options.from ? *_options.from - _options.warmup : std::numeric_limits<long long>::min(),
           .end = _options.to.value_or(std::numeric_limits<long long>::max()),
           .readsAhead = _options.follower == nullptr,
           .interrupted = _options.interrupted},
          _options.blocks),
      _lateFeed(_options, _schedule,
                [this](const nxFeedEvent& event) { _Show(_markets.Get(event.product), event); }),
      _markets(_source, std::make_shared<const std::vector<nxProductDescription>>(_options.products), *this,
               _lateFeed.IsOn()),
      _jobs(_state, _clock, _output, _watch),
      _trading(_state, _clock, _output, _results, _jobs, _source, _schedule,
               [this](bool reportQueue, nxExchangeObservers observers) {
                   return _MakeExchange(reportQueue, std::move(observers));
               }),
      _delivery(_state, _clock, _jobs, _markets, _trading),
      _bars(_state, _clock, _output, _jobs, _markets, _source, _schedule),
      _timers(_state, _clock, _jobs, _source, _schedule),
      _news(_output, _jobs),
      _stores(_state, _clock, _output, _schedule),
      _life(_state, _output, _jobs, _news, _trading, _timers, _stores, _source),
      _parameters(_state, _jobs, _news, _schedule),
      _adjustments(_state, _clock, _markets, _trading, _schedule)
{
    _schedule.SetTask(nxDue::TradingHours, [this] {
        _markets.FollowHours(_clock.Get());
        _schedule.Set(nxDue::TradingHours, _markets.GetNextStateTime());
    });
}

nxRunResult nxRun::Run()
{
    nxStackThread::Run(nxStackThread::ForScripts, [this] {
        for (bool isMore = Begin(); isMore;)
            isMore = Continue();
    });
    return _state.result;
}

bool nxRun::Begin()
{
    std::vector<nxScriptSource> sources;
    if (!_Prepare(sources)) {
        _state.result = nxRunResult::InputFailed;
        return false;
    }
    // The clock of a script counts whole seconds from the time it is set to.
    _clock.Begin(FloorSecond(_source.GetFirstTime().value_or(0)));
    const nxTimeSource::Installation installation(_clock);
    _watch.Start();
    _Guard([&] { _Begin(std::move(sources)); });
    return true;
}

bool nxRun::Continue()
{
    const nxTimeSource::Installation installation(_clock);
    bool isWaiting = false;
    if (!_isStarted) _Guard([&] { isWaiting = !_StartJobs(); });
    if (isWaiting) return true;
    _isStarted = true;
    _Guard([&] { isWaiting = !_Replay(); });
    if (isWaiting) return true;
    _End();
    return false;
}

void nxRun::_End()
{
    if (_options.follower != nullptr) _options.follower->BeforeEnd();
    _Guard([&] { _Finish(); });
    _Guard([&] { _stores.Finish(); });
    _watch.Stop();
    _state.statistics.wallNanoseconds = _clock.GetElapsed().count();
    _WriteSummary();
    _trading.WriteStories();
    if (_profiler) _WriteProfile();
    if (_options.onResult) _options.onResult(_results.GetResult());
    if (!_options.isInEnvelope) static_cast<void>(WriteResult(std::nullopt));
    // A script that is closed may still look at the jobs that it watches.
    _watch.Start();
    _jobs.Close();
    _watch.Stop();
}

// What goes wrong outside of the scripts, such as a lack of memory, ends the run, and ends it properly.
template <class Do>
void nxRun::_Guard(Do part)
{
    try {
        part();
    } catch (const std::bad_alloc&) {
        _Fail("out of memory");
    } catch (const std::exception& exception) {
        _Fail(exception.what());
    }
}

void nxRun::_Fail(const char* what)
{
    _state.result = nxRunResult::InputFailed;
    _state.End(what);
    _output.Complain(what);
}

bool nxRun::_Prepare(std::vector<nxScriptSource>& sources)
{
    nxScriptSource modules;  // read once: one may be a pipe
    std::optional<std::string> error;
    for (const std::string& file : _options.modules)
        if (!error) error = modules.Add(file);
    for (const nxJobOptions& job : _options.jobs)
        if (!error) error = sources.emplace_back(modules).Add(job.script);
    if (!error && !_source.Open(_options.data, nxGetFeedTerms(_options.products)))
        error = _source.GetError().GetText();
    if (!error && _options.to && !_source.GetFirstTime() && _source.GetLastTime() != 0)
        error =
            fmt::format("--to: no row before {}; the first is of {}", nxFeedTime::GetAsString(*_options.to),
                        nxFeedTime::GetAsString(_source.GetLastTime()));
    if (!error) error = _stores.Open();
    if (!error) error = _output.OpenRecord();
    if (!error) {
        _state.hasTime = _source.GetFirstTime().has_value();
        _clock.Set(_source.GetFirstTime().value_or(0));
        error = _results.Open();
    }
    if (!error && nxRunProfiler::IsWanted(_options)) error = _profiler.emplace(_options).Open();
    if (error) _output.Complain(*error);
    return !error;
}

void nxRun::_Begin(std::vector<nxScriptSource> sources)
{
    _state.statistics.firstTime = _source.GetFirstTime().value_or(0);
    if (_state.hasTime) _trading.SetFirstTime(_state.statistics.firstTime);
    _jobs.Make({&_delivery, &_timers, &_trading, &_bars, &_output, &_news, &_stores}, std::move(sources),
               _life);
    if (_profiler) _profiler->Follow(_jobs);
    _definitions.SetProducts(_markets.GetDescriptions());
    if (_options.watchProducts) _productWatch.emplace(_options.productFile, _options.watchInterval);
    _markets.MakeStrategies(_clock.Get());
    _parameters.Begin();
    _adjustments.Begin();
    _stores.Begin();
}

bool nxRun::_StartJobs()
{
    if (_options.from && !_WarmUp(*_options.from)) return false;
    for (const auto& runner : _jobs)
        _life.Load(*runner);
    _SetClocks(_clock.Get());
    // Also those of a run that is interrupted meanwhile: each job has its OnInit and its OnShutdown.
    for (const auto& runner : _jobs)
        if (!_state.isOver) _life.Start(*runner);
    return true;
}

// No script is loaded yet, so nobody is told; what the scripts make in their OnInit finds the data as
// history.
bool nxRun::_WarmUp(long long from)
{
    while (!_state.IsEnding()) {
        if (!_source.Look()) return false;
        if (!_source.HasNextBefore(from)) break;
        if (const auto step = _Step(false); step == nxEventSource::Step::End) break;
    }
    if (!_state.IsEnding() && !_source.HasFailed()) _EndWarmUp(from);
    return true;
}

void nxRun::_EndWarmUp(long long from)
{
    if (!_source.HasNext()) {
        _Fail(fmt::format("--from: no row from {} on; the last one that was read is of {}",
                          nxFeedTime::GetAsString(from), nxFeedTime::GetAsString(_source.GetLastTime()))
                  .c_str());
        return;
    }
    const long long begin = std::max(from, _clock.Get());
    _SetTime(begin, false);
    _clock.Begin(begin);
    nxRunStatistics statistics;  // what was counted so far is no part of the run
    statistics.jobs = std::move(_state.statistics.jobs);
    statistics.firstTime = statistics.lastTime = begin;
    _state.statistics = std::move(statistics);
    _results.BeginCounting();
}

bool nxRun::_Replay()
{
    while (!_state.IsEnding()) {
        const nxEventSource::Step step = _Step(true);
        if (step == nxEventSource::Step::Wait) return false;
        if (step == nxEventSource::Step::End) break;
    }
    _output.EraseProgress();
    return true;
}

// One event, or what is due before it. End: there is no more, or the run is to end.
nxEventSource::Step nxRun::_Step(bool isPaced)
{
    using enum nxEventSource::Step;
    if (_productWatch) [[unlikely]]
        _FollowProducts();
    const nxFeedEvent* event = nullptr;
    const nxEventSource::Step step =
        _source.Next(_schedule.GetNextTime(), _schedule.GetNextTimeBeforeBars(), event);
    if (step == Wait || (step == End && _lateFeed.IsEmpty())) return step;
    const bool isEvent = step == Event;
    const long long time = isEvent ? event->time : _schedule.GetNextTime();
    if (isPaced) _clock.WaitFor(time);
    if (_state.IsEnding()) return End;
    // What was due before the data takes place where the run begins.
    _SetTime(std::max(time, _clock.Get()), isEvent && event->kind == nxFeedKind::Bar);
    if (_options.follower != nullptr) [[unlikely]]
        _options.follower->BeforeStep(isEvent ? event : nullptr, _source.GetProducts(), time);
    if (_profiler) [[unlikely]]
        _profiler->OnStep(isEvent ? event : nullptr, time);
    isEvent ? _Apply(*event) : _schedule.RunNext();
    return isEvent ? Event : Deadline;
}

void nxRun::_SetTime(long long time, bool isBar)
{
    // A script's clock counts some 68 years on from the time that it was set to, and stands still then.
    constexpr unsigned long long farthest = (1ull << 30) * nxTime::NanosecondsPerSecond;
    if (static_cast<unsigned long long>(time) - static_cast<unsigned long long>(_clockTime) > farthest)
        [[unlikely]]
        _SetClocks(FloorSecond(time));
    // A bar that ends at midnight is of the day before.
    if (time >= _trading.GetNextDay() && !(isBar && time == _trading.GetNextDay())) [[unlikely]]
        _trading.BeginDay(time, isBar);
    _clock.Set(time);
}

void nxRun::_SetClocks(long long time)
{
    _clockTime = time;
    _clock.Set(time);
    for (const auto& runner : _jobs)
        runner->GetJob().GetObject().SetClockTime(_clock.GetNow().GetAsDateTime());
}

void nxRun::_Apply(const nxFeedEvent& event)
{
    constexpr unsigned int progressInterval = 4096;
    _Count(event);
    _results.CountRows(event.file, event.rows);
    nxMarket& market = _markets.Meet(event);
    if (_lateFeed.IsOn()) [[unlikely]] {
        _ApplyAhead(market, event);
        _lateFeed.Send(event);
    } else {
        _Show(market, event);
    }
    if (_untilProgress-- == 0) {
        _untilProgress = progressInterval;
        _output.ShowProgress(_source);
    }
}

void nxRun::_Count(const nxFeedEvent& event)
{
    nxRunStatistics& statistics = _state.statistics;
    statistics.lastTime = event.time;
    switch (event.kind) {
        case nxFeedKind::Quote:
            ++(event.quote.IsTrade() ? statistics.trades : statistics.quotes);
            break;
        case nxFeedKind::Bar:
            ++statistics.bars;
            break;
        case nxFeedKind::Depth:
            ++statistics.depthChanges;
            statistics.depthRows += event.rows;
            break;
    }
}

void nxRun::_ApplyAhead(nxMarket& market, const nxFeedEvent& event)
{
    nxMarketProduct& product = *market.ahead;
    switch (event.kind) {
        case nxFeedKind::Quote:
            product.ApplyQuote(event.quote, event.time);
            break;
        case nxFeedKind::Bar:
            product.ApplyBar(event.bar, event.time);
            break;
        case nxFeedKind::Depth:
            product.ApplyDepth(event.levels);
            if (!_HasPrices(event)) static_cast<void>(product.QuoteFromDepth());
            break;
    }
    _Trade(market, event);
    if (!market.strategies.empty()) _markets.PriceStrategiesAhead(market, event.time);
}

void nxRun::_Show(nxMarket& market, const nxFeedEvent& event)
{
    event.kind == nxFeedKind::Depth ? _ShowDepth(market, event) : _ShowPrice(market, event);
    if (!market.strategies.empty()) _markets.PriceStrategies(market, event.time);
}

void nxRun::_ShowPrice(nxMarket& market, const nxFeedEvent& event)
{
    const bool isBar = event.kind == nxFeedKind::Bar;
    isBar ? market.product.ApplyBar(event.bar, event.time)
          : market.product.ApplyQuote(event.quote, event.time);
    _delivery.UpdateTradeVolumes(market);
    if (!_lateFeed.IsOn()) _Trade(market, event);
    _bars.Feed(market, event);
    if (isBar || event.quote.IsTrade()) _delivery.DeliverTrade(market);
    _delivery.DeliverPrice(market);
    _delivery.DeliverTradeVolumes(market);
}

void nxRun::_ShowDepth(nxMarket& market, const nxFeedEvent& event)
{
    market.product.ApplyDepth(event.levels);
    const bool isPriced = !_HasPrices(event) && market.product.QuoteFromDepth();
    if (!_lateFeed.IsOn()) _Trade(market, event);
    _bars.Count();
    _delivery.DeliverDepth(market);
    if (isPriced) _delivery.DeliverPrice(market);
}

// A product with quotes of its own has its prices from there, others from their depth.
bool nxRun::_HasPrices(const nxFeedEvent& event) const
{
    const nxFeedProduct& known = _source.GetProducts().Get(event.product);
    return known.HasQuoteColumns() || known.Has(nxFeedKind::Bar);
}

void nxRun::_Trade(nxMarket& market, const nxFeedEvent& event)
{
    _trading.OnEvent(market, event);
    if (_schedule.Get(nxDue::Venue) <= _clock.Get()) _life.Run();
}

void nxRun::OnMarketMade(nxMarket& market)
{
    _schedule.Set(nxDue::TradingHours, _markets.GetNextStateTime());
    _trading.AddMarket(market);
}

void nxRun::OnTickSize(nxMarket& market)
{
    _delivery.TakeTickSize(market);
    _trading.TakeTickSize(market);
}

void nxRun::OnMarketState(nxMarket& market)
{
    _trading.OnMarketState(market);
    _delivery.DeliverState(market);
}

void nxRun::OnImpliedQuote(nxMarket& strategy, const nxFeedEvent& event)
{
    if (!_lateFeed.IsOn()) {
        ++_state.statistics.impliedQuotes;
        _Trade(strategy, event);
    }
    _delivery.DeliverPrice(strategy);
}

void nxRun::OnImpliedQuoteAhead(nxMarket& strategy, const nxFeedEvent& event)
{
    ++_state.statistics.impliedQuotes;
    _Trade(strategy, event);
}

void nxRun::_FollowProducts()
{
    nxProductDescriptions products = _markets.GetDescriptions();
    std::vector<std::string> lines;
    const bool isChanged = _productWatch->Look(products, lines);
    for (const std::string& line : lines)
        _output.Log(line);
    if (!isChanged) return;
    _definitions.SetProducts(products);
    _markets.ChangeDescriptions(std::move(products), _clock.Get());
}

void nxRun::_Finish()
{
    const bool isEarly = _state.IsEnding();
    _NameTheEnd();
    if (_profiler) _profiler->BeforeEnd(_jobs);
    const std::string reason = _state.end;
    _life.EndAll(reason, isEarly);
    for (const auto& runner : _jobs) {
        nxTradingStatistics& trading = runner->GetStatistics().trading;
        trading = _trading.GetStatistics(runner->GetJob());
        nxTradingRecord::WriteResult(_output, runner->GetJob(), trading,
                                     _state.statistics.GetRowEventCount());
    }
    nxNoteWhatIsMissing(_state, _jobs, _trading, _source.GetProducts());
}

void nxRun::_NameTheEnd()
{
    // A script may have caught it, but what it called was left half done.
    if (_state.IsShortOfMemory() && _state.result != nxRunResult::InputFailed) _Fail("out of memory");
    const auto remark = [&](std::size_t count, const char* where) {
        if (count != 0)
            _state.statistics.remarks.push_back(std::to_string(count) + " parameter change" +
                                                (count == 1 ? "" : "s") + where);
    };
    // Mostly a time that was meant otherwise.
    remark(_parameters.GetCountFromBefore(_state.statistics.firstTime), " from before the data");
    _adjustments.NoteUnmet();
    if (!_state.end.empty()) return;  // the last job, or a failure, has ended the run
    if (_state.IsEnding()) {
        _state.end = "interrupted";
    } else if (_source.HasFailed()) {
        _output.Complain(_source.GetError().GetText());
        _state.end = "bad data: " + _source.GetError().GetText();
        _state.result = nxRunResult::InputFailed;
    } else {
        _state.end = "the data ended";
        _markets.ForEach([this](nxMarket& market) {
            if (market.OpensWithData()) _markets.SetState(market, nxAlgoStateObject::Closed);
        });
        remark(_parameters.GetCountLeft(), " behind the end");
    }
}

void nxRun::_WriteSummary()
{
    std::vector<std::string>& remarks = _state.statistics.remarks;
    const std::vector<std::string> ofData = _source.GetRemarks();
    remarks.insert(remarks.begin(), ofData.begin(), ofData.end());
    nxNoteUnreadParameters(_state, _jobs);
    if (_options.getNotes)
        for (std::string& note : _options.getNotes())
            _state.statistics.notes.push_back(std::move(note));
    nxNoteNoLatency(_state);
    _results.Finish(_state.statistics);
    nxRunSummary::WriteCounts(_output.GetOut(), _state.statistics, _state.end, _results.GetResult());
    _output.GetOut().flush();
    nxRunSummary::WriteSpeed(_output.GetErr(), _state.statistics);
}

void nxRun::_WriteProfile()
{
    if (const auto error = _profiler->Write(_jobs, _source.GetProducts(), _output)) {
        _state.result = nxRunResult::InputFailed;
        _output.Complain(*error);
    }
}

nxRunResult nxRun::WriteResult(std::optional<std::vector<nxResultVariant>> envelope)
{
    if (const auto error = _results.Write(std::move(envelope))) {
        _state.result = nxRunResult::InputFailed;
        _output.Complain(*error);
    }
    return _state.result;
}

std::unique_ptr<nxVenue> nxRun::_MakeExchange(bool reportQueue, nxExchangeObservers observers) const
{
    nxExchangeOptions options = _options.exchange;
    options.reportQueue = reportQueue;
    return std::make_unique<nxSimulatedExchange>(options, std::move(observers));
}
