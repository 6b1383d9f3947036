#include "host/run/nxReplayServer.h"

#include <algorithm>
#include <thread>

#include "base/time/nxTimerCallback.h"
#include "host/report/nxRunSummary.h"
#include "host/run/nxUnreadParameters.h"

namespace {

constexpr long long NanosecondsPerSecond = 1'000'000'000;

long long FloorSecond(long long time)
{
    const long long rest = time % NanosecondsPerSecond;
    return time - (rest < 0 ? rest + NanosecondsPerSecond : rest);
}

// Never beyond the end of all times.
long long Later(long long time, long long by)
{
    return time > nxTimerQueue::Never - by ? nxTimerQueue::Never : time + by;
}

}  // namespace

nxReplayServer::nxReplayServer(nxRunOptions options, std::ostream& out, std::ostream& err)
    : _options(std::move(options)),
      _out(out),
      _err(err),
      _progress(_options.progress == nullptr ? err : *_options.progress, _options.showProgress,
                _options.progressLabel),
      _feed({_options.lenient, _options.barsBearStart, _options.barPeriods, _options.interrupted})
{
}

nxReplayServer::~nxReplayServer() = default;

nxRunResult nxReplayServer::Run()
{
    std::vector<nxScriptSource> sources;
    if (!_Prepare(sources)) return _result = nxRunResult::InputFailed;
    // The clock of a script counts whole seconds from the time it is set to.
    _hasTime = _next != nullptr;
    if (_hasTime) _time.Set(FloorSecond(_next->time));
    const nxTimeSource::Installation installation(_time);
    _wallStart = std::chrono::steady_clock::now();
    _MakeJobs(std::move(sources));
    _MakeStrategies();
    _FindNextChange();
    if (_options.storeEvery > 0.0 && _stores.IsOpen() && _hasTime) {
        constexpr double longest = 1e9;
        const double seconds = std::clamp(_options.storeEvery, 1.0 / NanosecondsPerSecond, longest);
        _saveInterval = static_cast<long long>(seconds * NanosecondsPerSecond);
        _nextSaveTime = Later(_time.Get(), _saveInterval);
    }
    for (const auto& runner : _runners)
        _LoadJob(*runner);
    _SetClocks(_time.Get());
    // Also those of a run that is interrupted meanwhile: each job has its OnInit and its OnShutdown.
    for (const auto& runner : _runners)
        if (!_isOver) _StartJob(*runner);
    _Replay();
    _Finish();
    _statistics.wallNanoseconds =
        std::chrono::nanoseconds(std::chrono::steady_clock::now() - _wallStart).count();
    _CloseRecord();
    _WriteSummary();
    if (!_options.explain.empty()) _WriteStories();
    // A script that is closed may still look at the jobs that it watches.
    for (const auto& runner : _runners)
        runner->GetJob().Close();
    _runners.clear();
    return _result;
}

bool nxReplayServer::_Prepare(std::vector<nxScriptSource>& sources)
{
    nxScriptSource modules;  // read once: one may be a pipe
    std::optional<std::string> fault;
    for (const std::string& file : _options.modules)
        if (!fault) fault = modules.Add(file);
    for (const nxJobOptions& job : _options.jobs)
        if (!fault) fault = sources.emplace_back(modules).Add(job.script);
    if (fault) {
        _err << *fault << "\n";
        return false;
    }
    if (_feed.Open(_options.data, nxGetFeedTerms(_options.products))) _next = _feed.Next();
    if (_next == nullptr && _feed.HasFailed()) {
        _err << _feed.GetError().GetText() << "\n";
        return false;
    }
    if (!_options.storeDirectory.empty()) {
        if (const auto error = _options.storeImage ? _stores.OpenImage(*_options.storeImage)
                                                   : _stores.Open(_options.storeDirectory))
        {
            _err << *error << "\n";
            return false;
        }
    }
    if (_options.recordFile.empty()) return true;
    const auto error = _record.Open(_options.recordFile);
    if (error) _err << *error << "\n";
    return !error;
}

void nxReplayServer::_MakeJobs(std::vector<nxScriptSource> sources)
{
    _jobsToGo = _options.jobs.size();
    _statistics.jobs.resize(_jobsToGo);
    for (std::size_t i = 0; i < _jobsToGo; ++i) {
        const nxJobOptions& job = _options.jobs[i];
        _statistics.jobs[i].name = job.name;
        nxHostServices& services = *this;
        _runners.push_back(std::make_unique<nxJobRunner>(services, job, static_cast<unsigned int>(i),
                                                         _jobsToGo == 1 ? job.script : job.name,
                                                         std::move(sources[i]), _statistics.jobs[i]));
    }
}

bool nxReplayServer::_IsEnding() const
{
    return _isOver || (_options.interrupted != nullptr && _options.interrupted->load());
}

void nxReplayServer::_EndRun(const std::string& reason)
{
    _isOver = true;
    if (_end.empty()) _end = reason;
}

void nxReplayServer::_Replay()
{
    _statistics.firstTime = _next == nullptr ? 0 : _next->time;
    constexpr unsigned int progressInterval = 4096;
    unsigned int untilProgress = progressInterval;
    while (_next != nullptr) {
        if (_watch) [[unlikely]]
            _FollowProducts();
        if (_GetNextDue() <= _next->time) _RunDue(_next->time);
        if (_options.speed > 0.0) _WaitFor(_next->time);
        if (_IsEnding()) break;
        _SetTime(_next->time);
        _Apply(*_next);
        if (--untilProgress == 0) {
            untilProgress = progressInterval;
            _progress.Update(_statistics.GetEventCount(), _feed.GetBytesConsumed(), _feed.GetBytesTotal());
        }
        // What stands behind the event that ended the run is nobody's business, bad rows included.
        if (_IsEnding()) break;
        _next = _feed.Next();
    }
    _progress.Erase();
}

void nxReplayServer::_Finish()
{
    const bool isEarly = _IsEnding();
    const auto remark = [&](std::size_t count, const char* where) {
        if (count == 0) return;
        _statistics.remarks.push_back(std::to_string(count) + " parameter change" + (count == 1 ? "" : "s") +
                                      where);
    };
    // Mostly a time that was meant otherwise.
    const auto isBefore = [&](const nxParameterChange& change) {
        return change.time < _statistics.firstTime;
    };
    remark(static_cast<std::size_t>(std::ranges::count_if(_options.changes, isBefore)),
           " from before the data");
    if (!_end.empty()) {
        // the last job, or a failure, has ended the run
    } else if (isEarly) {
        _end = "interrupted";
    } else if (_feed.HasFailed()) {
        _err << _feed.GetError().GetText() << "\n";
        _end = "bad data: " + _feed.GetError().GetText();
        _result = nxRunResult::InputFailed;
    } else {
        _end = "the data ended";
        // By index: a script may ask for one more product while it hears of this.
        for (std::size_t i = 0; i < _markets.size(); ++i)
            if (_markets[i] != nullptr && _markets[i]->OpensWithData())
                _SetState(*_markets[i], nxAlgoStateObject::Closed);
        remark(_options.changes.size() - _nextChange, " behind the end");
    }
    // All of them end at this one moment, so none is told of another's end.
    _isSettling = true;
    const std::string reason = _end;
    for (const auto& runner : _runners)
        _EndJob(*runner, runner->IsEndAsked() ? runner->GetEndReason() : reason, isEarly);
    _TakeLastAnswers();
    _FlattenAtEnd();
    _SaveStores(true);
    for (const auto& runner : _runners)
        runner->GetStatistics().trading = runner->GetJob().GetTrading();
}

void nxReplayServer::_CloseRecord()
{
    const auto error = _record.Close();
    if (!error) return;
    _result = nxRunResult::InputFailed;
    _err << *error << "\n";
}

void nxReplayServer::_WriteSummary()
{
    const std::vector<std::string> remarks = _feed.GetRemarks();
    _statistics.remarks.insert(_statistics.remarks.begin(), remarks.begin(), remarks.end());
    _CollectNotes();
    nxRunSummary::WriteCounts(_out, _statistics, _end);
    _out.flush();
    nxRunSummary::WriteSpeed(_err, _statistics);
}

void nxReplayServer::_CollectNotes()
{
    nxUnreadParameters unread;
    for (const auto& runner : _runners) {
        const nxJobStatistics& statistics = runner->GetStatistics();
        const bool hasFailed = std::ranges::any_of(statistics.failures, [](const auto& failure) {
            return failure.callback.value_or(nxCallback::OnInit) == nxCallback::OnInit;
        });
        if (statistics[nxCallback::OnInit].count != 0 && !hasFailed)
            unread.Add(runner->GetJob().GetOptions(), statistics[nxCallback::OnParameter].defined);
    }
    for (const nxParameterChange& change : _options.changes)
        if (!change.tag.empty()) unread.NoteTagged(change.name);
    _statistics.notes = unread.GetNotes();
    if (!_options.getNotes) return;
    for (std::string& note : _options.getNotes())
        _statistics.notes.push_back(std::move(note));
}

void nxReplayServer::_WriteStories()
{
    std::vector<std::string> names;
    for (const nxJobOptions& job : _options.jobs)
        names.push_back(job.name);
    // In a run without orders there is nobody yet to tell that there are none.
    if (!_stories) _stories.emplace(_options.explain, nullptr);
    const unsigned int orders = _exchange ? _exchange->GetOrderCount() : 0;
    if (!_stories->Write(_out, _err, orders, names) && _result == nxRunResult::Done)
        _result = nxRunResult::ScriptFailed;
    _out.flush();
}

void nxReplayServer::_SetTime(long long time)
{
    // A script's clock counts some 68 years on from the time that it was set to, and stands still then.
    constexpr unsigned long long farthest = (1ull << 30) * NanosecondsPerSecond;
    if (static_cast<unsigned long long>(time) - static_cast<unsigned long long>(_clockTime) > farthest)
        [[unlikely]]
    {
        _SetClocks(FloorSecond(time));
    }
    if (time >= _nextDay) [[unlikely]]
        _BeginDay(time);
    _time.Set(time);
}

void nxReplayServer::_SetClocks(long long time)
{
    _clockTime = time;
    _time.Set(time);
    for (const auto& runner : _runners)
        runner->GetJob().GetObject().SetClockTime(_time.GetNow().GetAsDateTime());
}

// A watched replay keeps its pace; in short sleeps, so that an interruption is seen at once.
void nxReplayServer::_WaitFor(long long time)
{
    if (_IsEnding()) return;
    _out.flush();
    constexpr double farthest = 4e18;  // which the clock still reaches: 126 years
    const double recorded =
        static_cast<double>(time) - static_cast<double>(FloorSecond(_statistics.firstTime));
    const double ahead = std::min(recorded / _options.speed, farthest);
    const auto until = _wallStart + std::chrono::nanoseconds(static_cast<long long>(ahead));
    while (std::chrono::steady_clock::now() < until && !_IsEnding()) {
        _progress.Update(_statistics.GetEventCount(), _feed.GetBytesConsumed(), _feed.GetBytesTotal());
        std::this_thread::sleep_until(
            std::min(until, std::chrono::steady_clock::now() + std::chrono::milliseconds(50)));
    }
}

void nxReplayServer::_MakeMarket(unsigned int index)
{
    if (index >= _markets.size()) _markets.resize(index + 1);
    const nxFeedProduct& known = _feed.GetProducts().Get(index);
    std::unique_ptr<Market>& market = _markets[index];
    market = std::make_unique<Market>(known.GetName(), known.GetTickSize(), _runners.size());
    for (const nxProductDescription& description : _options.products) {
        if (description.name != known.GetName()) continue;
        market->hours = description.tradingHours;
        market->none = market->everybody =
            nxProductAccount(description.pointValue, description.currency,
                             {description.makerFee, description.takerFee, description.feeIsRate});
    }
    if (!market->hours.IsEmpty()) {
        // Nobody has subscribed to it yet, so nobody is told.
        market->nextState = market->hours.GetNextChange(_time.Get());
        _nextStateTime = std::min(_nextStateTime, market->nextState);
        const bool isOpen = market->hours.IsOpen(_time.Get());
        static_cast<void>(
            market->product.SetState(isOpen ? nxAlgoStateObject::Open : nxAlgoStateObject::Closed));
    }
    if (_exchange) _AddToExchange(*market);
}

void nxReplayServer::_Apply(const nxFeedEvent& event)
{
    _statistics.lastTime = event.time;
    Market& market = _GetMarket(event.product);
    const nxFeedProduct& known = _feed.GetProducts().Get(event.product);
    if (known.GetTickSize() != market.tickSize) _TakeTickSize(market, known.GetTickSize());
    if (market.OpensWithData()) _SetState(market, nxAlgoStateObject::Open);
    market.isFresh = false;
    switch (event.kind) {
        case nxFeedKind::Quote:
            ++(event.quote.IsTrade() ? _statistics.trades : _statistics.quotes);
            market.product.ApplyQuote(event.quote, event.time);
            _UpdateTradeVolumes(market);
            if (_exchange) _TellExchange(market, event);
            _FeedCollections(market, event);
            if (market.hasWindows && event.quote.IsTrade()) _DeliverTrade(market);
            _DeliverPrice(market);
            _DeliverTradeVolumes(market);
            break;
        case nxFeedKind::Bar:
            ++_statistics.bars;
            market.product.ApplyBar(event.bar, event.time);
            _UpdateTradeVolumes(market);
            if (_exchange) _TellExchange(market, event);
            _FeedCollections(market, event);
            if (market.hasWindows) _DeliverTrade(market);
            _DeliverPrice(market);
            _DeliverTradeVolumes(market);
            break;
        case nxFeedKind::Depth:
            ++_statistics.depthChanges;
            _statistics.depthRows += event.rows;
            market.product.ApplyDepth(event.levels);
            if (_exchange) _TellExchange(market, event);
            ++_applied;
            _DeliverDepth(market);
            // A product with quotes of its own has its prices from there.
            if (!known.Has(nxFeedKind::Quote) && !known.Has(nxFeedKind::Bar) &&
                market.product.QuoteFromDepth())
                _DeliverPrice(market);
            break;
    }
    if (!market.strategies.empty()) _PriceStrategies(market.strategies);
}

long long nxReplayServer::_GetNextDue() const
{
    const long long own =
        std::min({_nextBarEnd, _nextChangeTime, _nextStateTime, _timers.GetNextTime(), _nextSaveTime});
    return _exchange ? std::min(own, _exchange->GetNextTime()) : own;
}

// Ends of bars, changed parameters, trading hours, orders with their answers, timers and saves, in the order
// of their times, on equal times in this one.
void nxReplayServer::_RunDue(long long until)
{
    while (!_IsEnding()) {
        const long long due = _GetNextDue();
        if (due > until || due == nxTimerQueue::Never) return;
        if (_options.speed > 0.0) _WaitFor(due);
        if (_IsEnding()) return;
        // A change from before the data takes place where the run begins.
        _SetTime(std::max(due, _time.Get()));
        if (due == _nextBarEnd) {
            _CloseBars();
        } else if (due == _nextChangeTime) {
            _ApplyChanges();
        } else if (due == _nextStateTime) {
            _FollowHours();
        } else if (_exchange && due == _exchange->GetNextTime()) {
            _RunExchange();
        } else if (due == _timers.GetNextTime()) {
            _RunTimer();
        } else {
            _SaveStoresInTime(until);
        }
    }
}

// Over a time in which nothing happens once is enough.
void nxReplayServer::_SaveStoresInTime(long long until)
{
    _SaveStores();
    const long long now = std::exchange(_nextSaveTime, nxTimerQueue::Never);
    const long long next = std::min(_GetNextDue(), until);
    const auto interval = static_cast<unsigned long long>(_saveInterval);
    const unsigned long long since =
        static_cast<unsigned long long>(next) - static_cast<unsigned long long>(now);
    const auto over = static_cast<long long>(since % interval);
    _nextSaveTime = since != 0 && over == 0 ? next : Later(next, _saveInterval - over);
}

void nxReplayServer::_RunTimer()
{
    const nxTimerQueue::Due timer = _timers.Pop();
    ++_statistics.timers;
    if (timer.callback != nullptr) return timer.callback->OnTimer();
    _Deliver(nxCallback::OnTimer, _GetRunner(*timer.job), &nxAlgoJobObject::OnTimer, timer.name);
}

void nxReplayServer::_FindNextChange()
{
    _nextChangeTime =
        _nextChange < _options.changes.size() ? _options.changes[_nextChange].time : nxTimerQueue::Never;
}

void nxReplayServer::_ApplyChanges()
{
    const long long time = _nextChangeTime;
    std::vector<bool> isChanged(_runners.size());
    for (; _nextChange < _options.changes.size() && _options.changes[_nextChange].time == time; ++_nextChange)
    {
        const nxParameterChange& change = _options.changes[_nextChange];
        ++_statistics.parameterChanges;
        if (!change.tag.empty()) SetDynamicParameter(change.tag, change.name, change.value);
        for (std::size_t i = 0; i < _runners.size() && !_IsEnding(); ++i) {
            if ((change.job && *change.job != i) || _runners[i]->IsOver()) continue;
            isChanged[i] = true;
            // That it fits was seen to before the run.
            static_cast<void>(_runners[i]->GetJob().ChangeParameter(change.name, change.value));
            _Deliver(nxCallback::OnParameter, *_runners[i], &nxAlgoJobObject::OnParameter, change.name,
                     change.value, change.tag);
        }
    }
    _FindNextChange();
    for (std::size_t i = 0; i < _runners.size() && !_IsEnding(); ++i)
        if (isChanged[i])
            _Deliver(nxCallback::OnJobParametersChanged, *_runners[i],
                     &nxAlgoJobObject::OnJobParametersChanged);
}

template <class Entry, class Event>
void nxReplayServer::_DeliverMarket(Market& market, nxMarketEvent kind, nxCallback callback, Entry entry,
                                    Event event)
{
    for (std::size_t i = 0; i < market.subscribers.size() && !_IsEnding(); ++i) {
        nxHostProduct* const product = market.subscribers[i];
        if (product != nullptr && product->Wants(kind))
            _Deliver(callback, *_runners[i], entry, event(*product));
    }
}

void nxReplayServer::_DeliverTrade(Market& market)
{
    for (std::size_t i = 0; i < market.subscribers.size() && !_IsEnding(); ++i) {
        nxHostProduct* const product = market.subscribers[i];
        if (product != nullptr && product->Wants(nxMarketEvent::TradeWindow) && !_runners[i]->IsOver())
            product->ForwardTrade();
    }
}

void nxReplayServer::_DeliverPrice(Market& market)
{
    _DeliverMarket(
        market, nxMarketEvent::Price, nxCallback::OnPrice, &nxAlgoJobObject::OnPrice,
        [](nxHostProduct & product) -> auto& { return product.GetPriceEvent(); });
}

void nxReplayServer::_DeliverDepth(Market& market)
{
    _DeliverMarket(
        market, nxMarketEvent::Depth, nxCallback::OnMarketDepth, &nxAlgoJobObject::OnMarketDepth,
        [](nxHostProduct & product) -> auto& { return product.GetDepthEvent(); });
}

// Before anybody hears of the event, so that all see the same.
void nxReplayServer::_UpdateTradeVolumes(Market& market)
{
    market.hasTradeVolumes = false;
    const auto wants = [](const nxHostProduct* product) {
        return product != nullptr && product->Wants(nxMarketEvent::TradeVolumes);
    };
    if (std::ranges::none_of(market.subscribers, wants)) return;
    nxPriceTradeVolumes update;
    market.hasTradeVolumes = market.product.GetTradeVolumesUpdate(update);
    if (!market.hasTradeVolumes) return;
    for (nxHostProduct* product : market.subscribers)
        if (wants(product)) product->UpdateTradeVolumes(update);
}

void nxReplayServer::_DeliverTradeVolumes(Market& market)
{
    if (!market.hasTradeVolumes) return;
    _DeliverMarket(
        market, nxMarketEvent::TradeVolumes, nxCallback::OnPriceTradeVolumes,
        &nxAlgoJobObject::OnPriceTradeVolumes,
        [](nxHostProduct & product) -> auto& { return product.GetTradeVolumesEvent(); });
}

void nxReplayServer::_SetState(Market& market, unsigned int bits)
{
    if (!market.product.SetState(bits)) return;
    const bool isOpen = bits == nxAlgoStateObject::Open;
    market.isFresh = isOpen;
    if (_exchange && isOpen) _exchange->OnOpen(market.exchangeProduct, _time.Get());
    if (_exchange && !isOpen) _exchange->OnClose(market.exchangeProduct, _time.Get());
    _DeliverMarket(
        market, nxMarketEvent::State, nxCallback::OnProductState, &nxAlgoJobObject::OnProductState,
        [](nxHostProduct & product) -> auto& { return product.GetStateEvent(); });
    if (!market.product.IsStrategy()) _FollowLegs(market);
}

// Opens and closes the markets whose hours say so now, and finds out when they do next.
void nxReplayServer::_FollowHours()
{
    const long long now = _time.Get();
    // By index: a script may ask for one more product while it hears of this.
    for (std::size_t i = 0; i < _markets.size() && !_IsEnding(); ++i) {
        Market* const market = _markets[i].get();
        if (market == nullptr || market->nextState > now) continue;
        market->nextState = market->hours.GetNextChange(now);
        _SetState(*market, market->hours.IsOpen(now) ? nxAlgoStateObject::Open : nxAlgoStateObject::Closed);
    }
    _nextStateTime = nxTimerQueue::Never;
    for (const auto& market : _markets)
        if (market != nullptr) _nextStateTime = std::min(_nextStateTime, market->nextState);
}
