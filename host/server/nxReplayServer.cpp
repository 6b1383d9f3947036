#include "host/server/nxReplayServer.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <thread>

#include "host/feed/nxFeedTime.h"
#include "host/report/nxRunSummary.h"

namespace {

constexpr long long NanosecondsPerSecond = 1'000'000'000;
constexpr long long NanosecondsPerMillisecond = 1'000'000;

long long FloorSecond(long long time)
{
    const long long rest = time % NanosecondsPerSecond;
    return time - (rest < 0 ? rest + NanosecondsPerSecond : rest);
}

bool HasRows(const nxFeedProduct& product)
{
    return product.Has(nxFeedKind::Quote) || product.Has(nxFeedKind::Depth) || product.Has(nxFeedKind::Bar);
}

}  // namespace

nxReplayServer::nxReplayServer(nxRunOptions options, std::ostream& out, std::ostream& err)
    : _options(std::move(options)),
      _out(out),
      _err(err),
      _progress(err, _options.showProgress),
      _feed(_options.lenient)
{
}

nxReplayServer::~nxReplayServer() = default;

nxRunResult nxReplayServer::Run()
{
    if (!_Prepare()) return _result = nxRunResult::InputFailed;
    // The clock of a script counts whole seconds from the time it is set to.
    _hasTime = _next != nullptr;
    if (_hasTime) _time.Set(FloorSecond(_next->time));
    const nxTimeSource::Installation installation(_time);
    _wallStart = std::chrono::steady_clock::now();
    nxHostServices& services = *this;
    _job = std::make_unique<nxHostJob>(services, _options.script);
    if (_LoadScript()) {
        if (_StartJob()) _Replay();
        _Finish();
    }
    _statistics.wallNanoseconds =
        std::chrono::nanoseconds(std::chrono::steady_clock::now() - _wallStart).count();
    _WriteSummary();
    _job.reset();
    return _result;
}

bool nxReplayServer::_Prepare()
{
    std::vector<std::string> files = _options.modules;
    files.push_back(_options.script);
    for (const std::string& file : files) {
        if (const auto error = _source.Add(file)) {
            _err << *error << "\n";
            return false;
        }
    }
    if (_feed.Open(_options.data, _options.products)) _next = _feed.Next();
    if (_next == nullptr && _feed.HasFailed()) {
        _err << _feed.GetError().GetText() << "\n";
        return false;
    }
    return true;
}

bool nxReplayServer::_LoadScript()
{
    nxAlgoJobObject& object = _job->GetObject();
    object.SetMemoryLimit(_options.memoryLimit);
    object.SetScriptHelper(_source.GetHelper());
    if (object.LoadScript(_source.GetText()).IsSuccess()) return true;
    _NoteFailure(std::nullopt, object.GetErrorText());
    _end = "the script could not be loaded";
    return false;
}

bool nxReplayServer::_StartJob()
{
    nxAlgoJobObject& object = _job->GetObject();
    for (std::size_t i = 0; i < nxCallbackNames.size(); ++i)
        _statistics.callbacks[i].defined = object.IsFunctionDefined(nxCallbackNames[i]);
    object.SetClockTime(_time.GetNow().GetAsDateTime());
    if (!_statistics[nxCallback::OnInit].defined) {
        _err << _options.script << ": defines no function OnInit\n";
        _result = nxRunResult::ScriptFailed;
        _end = "the script defines no function OnInit";
        return false;
    }
    const auto start = std::chrono::steady_clock::now();
    const nxErrorEnum error = _job->Start();
    nxRunStatistics::Callback& counted = _statistics[nxCallback::OnInit];
    counted.count = 1;
    counted.nanoseconds = std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
    if (error.IsSuccess()) return true;
    _NoteFailure(nxCallback::OnInit, object.GetErrorText());
    _end = "OnInit failed";
    // A script that did not start is not resumed, whatever is to be done about later failures.
    _failed = true;
    return false;
}

bool nxReplayServer::_IsEnding() const
{
    return _shutdown || _failed || (_options.interrupted != nullptr && _options.interrupted->load());
}

void nxReplayServer::_Replay()
{
    _statistics.firstTime = _next == nullptr ? 0 : _next->time;
    constexpr unsigned int progressInterval = 4096;
    unsigned int untilProgress = progressInterval;
    while (_next != nullptr) {
        _RunTimers(_next->time);
        _WaitFor(_next->time);
        if (_IsEnding()) break;
        _time.Set(_next->time);
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
    if (_failed) {
        if (_end.empty()) _end = "a callback failed";
    } else if (_shutdown) {
        _end = "the script shut down";
    } else if (_options.interrupted != nullptr && _options.interrupted->load()) {
        _end = "interrupted";
    } else if (_feed.HasFailed()) {
        _err << _feed.GetError().GetText() << "\n";
        _end = "bad data: " + _feed.GetError().GetText();
        _result = nxRunResult::InputFailed;
    } else if (_end.empty()) {
        _end = "the data ended";
        // By index: a script may ask for one more product while it hears of this.
        for (std::size_t i = 0; i < _markets.size(); ++i)
            if (_markets[i] != nullptr) _SetState(*_markets[i], nxAlgoStateObject::Closed);
    }
    if (_statistics[nxCallback::OnInit].count != 0) {
        if (_statistics.GetDeliveredCount() == 0) _statistics.nothingDelivered = _ExplainNothing();
        _Call(nxCallback::OnShutdown, *_job, &nxAlgoJobObject::OnShutdown);
    }
    _job->GetObject().StopJob();
}

nxReplayServer::Market& nxReplayServer::_GetMarket(unsigned int index)
{
    if (index >= _markets.size()) _markets.resize(index + 1);
    std::unique_ptr<Market>& market = _markets[index];
    if (market == nullptr) {
        const nxFeedProduct& known = _feed.GetProducts().Get(index);
        market = std::make_unique<Market>(known.GetName(), known.GetTickSize());
    }
    return *market;
}

void nxReplayServer::_Apply(const nxFeedEvent& event)
{
    _statistics.lastTime = event.time;
    Market& market = _GetMarket(event.product);
    const nxFeedProduct& known = _feed.GetProducts().Get(event.product);
    if (known.GetTickSize() != market.tickSize) {
        market.tickSize = known.GetTickSize();
        for (const auto& [job, product] : market.subscribers)
            product->Describe(market.tickSize);
    }
    _SetState(market, nxAlgoStateObject::Open);
    switch (event.kind) {
        case nxFeedKind::Quote:
            ++(event.quote.IsTrade() ? _statistics.trades : _statistics.quotes);
            market.product.ApplyQuote(event.quote, event.time);
            _DeliverPrice(market);
            break;
        case nxFeedKind::Bar:
            ++_statistics.bars;
            market.product.ApplyBar(event.bar, event.time);
            _DeliverPrice(market);
            break;
        case nxFeedKind::Depth:
            ++_statistics.depthChanges;
            _statistics.depthRows += event.rows;
            market.product.ApplyDepth(event.levels);
            _DeliverDepth(market);
            // A product with quotes of its own has its prices from there.
            if (!known.Has(nxFeedKind::Quote) && !known.Has(nxFeedKind::Bar) &&
                market.product.QuoteFromDepth())
                _DeliverPrice(market);
            break;
    }
}

void nxReplayServer::_RunTimers(long long until)
{
    while (_timers.GetNextTime() <= until && !_IsEnding()) {
        const long long due = _timers.GetNextTime();
        _WaitFor(due);
        if (_IsEnding()) return;
        const nxTimerQueue::Due timer = _timers.Pop();
        _time.Set(due);
        ++_statistics.timers;
        _Call(nxCallback::OnTimer, *timer.job, &nxAlgoJobObject::OnTimer, timer.name);
    }
}

template <class Entry, class... Arguments>
void nxReplayServer::_Call(nxCallback callback, nxHostJob& job, Entry entry, Arguments&... arguments)
{
    nxRunStatistics::Callback& counted = _statistics[callback];
    if (!counted.defined) {
        // A script may define a callback later, from inside another one.
        counted.defined =
            job.GetObject().IsFunctionDefined(nxCallbackNames[static_cast<std::size_t>(callback)]);
        if (!counted.defined) return;
    }
    const auto start = std::chrono::steady_clock::now();
    const nxErrorEnum error = (job.GetObject().*entry)(arguments...);
    counted.nanoseconds += std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
    ++counted.count;
    if (error.IsSuccess()) return;
    ++counted.failures;
    _NoteFailure(callback, job.GetObject().GetErrorText());
}

void nxReplayServer::_NoteFailure(std::optional<nxCallback> callback, const std::string& errorText)
{
    if (_result == nxRunResult::Done) _result = nxRunResult::ScriptFailed;
    if (!_options.continueOnError) _failed = true;
    nxScriptSource::Failure what = _source.Explain(errorText);
    if (_options.memoryLimit != 0 && what.message.ends_with("not enough memory"))
        what.message += fmt::format("; the script may hold {:.3g} MiB",
                                    static_cast<double>(_options.memoryLimit) / (1 << 20));
    for (nxRunStatistics::Failure& known : _statistics.failures) {
        if (known.callback != callback || known.what.message != what.message) continue;
        ++known.count;
        return;
    }
    // A script whose every message differs would otherwise grow the list without end.
    constexpr std::size_t mostKept = 100;
    if (_statistics.failures.size() >= mostKept) return;
    const auto time = _hasTime ? std::optional(_time.Get()) : std::nullopt;
    _statistics.failures.push_back({std::move(what), callback, time, 1});
    _progress.Erase();
    _out.flush();
    nxRunSummary::WriteFailure(_err, _statistics.failures.back());
}

void nxReplayServer::_DeliverPrice(Market& market)
{
    for (std::size_t i = 0; i < market.subscribers.size() && !_IsEnding(); ++i) {
        const auto [job, product] = market.subscribers[i];
        if (product->wantsPrice > 0)
            _Call(nxCallback::OnPrice, *job, &nxAlgoJobObject::OnPrice, product->GetPriceEvent());
    }
}

void nxReplayServer::_DeliverDepth(Market& market)
{
    for (std::size_t i = 0; i < market.subscribers.size() && !_IsEnding(); ++i) {
        const auto [job, product] = market.subscribers[i];
        if (product->wantsDepth > 0)
            _Call(nxCallback::OnMarketDepth, *job, &nxAlgoJobObject::OnMarketDepth, product->GetDepthEvent());
    }
}

void nxReplayServer::_SetState(Market& market, unsigned int bits)
{
    if (!market.product.SetState(bits)) return;
    for (std::size_t i = 0; i < market.subscribers.size() && !_IsEnding(); ++i) {
        const auto [job, product] = market.subscribers[i];
        if (product->wantsState > 0)
            _Call(nxCallback::OnProductState, *job, &nxAlgoJobObject::OnProductState,
                  product->GetStateEvent());
    }
}

// A watched replay keeps its pace; in short sleeps, so that an interruption is seen at once.
void nxReplayServer::_WaitFor(long long time)
{
    if (_options.speed <= 0.0 || _IsEnding()) return;
    _out.flush();
    const double ahead = static_cast<double>(time - FloorSecond(_statistics.firstTime)) / _options.speed;
    const auto until = _wallStart + std::chrono::nanoseconds(static_cast<long long>(ahead));
    while (std::chrono::steady_clock::now() < until && !_IsEnding()) {
        _progress.Update(_statistics.GetEventCount(), _feed.GetBytesConsumed(), _feed.GetBytesTotal());
        std::this_thread::sleep_until(
            std::min(until, std::chrono::steady_clock::now() + std::chrono::milliseconds(50)));
    }
}

void nxReplayServer::_WriteSummary()
{
    _statistics.remarks = _feed.GetRemarks();
    nxRunSummary::WriteCounts(_out, _statistics, _end);
    _out.flush();
    nxRunSummary::WriteSpeed(_err, _statistics);
}

// The products that the data holds rows of, the first few by name.
std::string nxReplayServer::_GetNames() const
{
    constexpr unsigned int mostNamed = 20;
    std::string names;
    unsigned int count = 0;
    const nxFeedProductTable& products = _feed.GetProducts();
    for (unsigned int i = 0; i < products.GetCount(); ++i) {
        if (!HasRows(products.Get(i)) || ++count > mostNamed) continue;
        names += (names.empty() ? "" : ", ") + products.Get(i).GetName();
    }
    return count <= mostNamed ? names : names + " and " + std::to_string(count - mostNamed) + " more";
}

std::string nxReplayServer::_ExplainNothing() const
{
    const std::string names = _GetNames();
    if (names.empty()) return "the data holds no rows";
    if (!_unknownProduct.empty())
        return "the script asked for product " + _unknownProduct + ", which is not in the data; it holds " +
               names;
    // A script that was ended early may have had its reasons; the summary tells how it ended.
    if (_IsEnding()) return {};
    if (_job->GetProducts().empty()) return "the script asked for no product; the data holds " + names;
    if (!_job->HasSubscribed())
        return "the script subscribed to nothing: call subscribePrice() or subscribeMarketDepth() of a "
               "product";
    std::string reason;
    for (const auto& [name, product] : _job->GetProducts()) {
        if (!reason.empty()) break;
        const nxFeedProduct* known = _feed.GetProducts().Find(name);
        const auto lacks = [&](nxCallback callback, int wanted) {
            return wanted > 0 && !_statistics[callback].defined;
        };
        if (known == nullptr || !HasRows(*known)) {
            reason = "the data holds nothing of product " + name + "; it holds " + names;
        } else if (lacks(nxCallback::OnPrice, product->wantsPrice)) {
            reason = "the script subscribed to the prices of " + name + " but defines no function OnPrice";
        } else if (lacks(nxCallback::OnMarketDepth, product->wantsDepth)) {
            reason =
                "the script subscribed to the depth of " + name + " but defines no function OnMarketDepth";
        } else if (product->wantsDepth > 0) {
            reason = "the script subscribed to the depth of " + name + ", of which the data holds none";
        } else if (lacks(nxCallback::OnProductState, product->wantsState)) {
            reason =
                "the script subscribed to the state of " + name + " but defines no function OnProductState";
        }
    }
    return reason;
}

nxMarketProduct* nxReplayServer::FindMarket(const std::string& name)
{
    const nxFeedProductTable& products = _feed.GetProducts();
    for (unsigned int i = 0; i < products.GetCount(); ++i)
        if (products.Get(i).GetName() == name) return &_GetMarket(i).product;
    return nullptr;
}

void nxReplayServer::Describe(nxHostProduct& product)
{
    for (const auto& market : _markets) {
        if (market == nullptr || &market->product != &product.GetMarket()) continue;
        product.Describe(market->tickSize);
    }
    for (const nxProductDescription& description : _options.products) {
        if (description.name != product.GetMarket().GetName()) continue;
        product.SetExchange(description.exchange);
        if (description.pointValue.IsValid())
            product.SetPointValue(nxMoney(description.pointValue, description.currency));
    }
}

void nxReplayServer::NoteSubscription(nxHostProduct& product)
{
    for (const auto& market : _markets) {
        if (market == nullptr || &market->product != &product.GetMarket()) continue;
        const auto isKnown = [&](const auto& subscriber) { return subscriber.second == &product; };
        if (std::ranges::none_of(market->subscribers, isKnown))
            market->subscribers.emplace_back(_job.get(), &product);
    }
}

void nxReplayServer::LogText(nxHostJob&, const std::string& text)
{
    _progress.Erase();
    constexpr std::size_t toMilliseconds = std::string_view("YYYYMMDD:HH:MM:SS.mmm").size();
    const std::string stamp = _hasTime ? nxFeedTime::GetAsString(_time.Get()) : std::string();
    _out << std::string_view(stamp).substr(0, toMilliseconds) << "  " << text << "\n";
}

void nxReplayServer::StartTimer(nxHostJob& job, const std::string& name, unsigned int milliseconds)
{
    _timers.Start(job, name, _time.Get(), milliseconds * NanosecondsPerMillisecond);
}

void nxReplayServer::StopTimer(nxHostJob& job, const std::string& name)
{
    _timers.Stop(job, name);
}

void nxReplayServer::NoteShutdown(nxHostJob&)
{
    _shutdown = true;
}

void nxReplayServer::NoteUnknownProduct(nxHostJob&, const std::string& name)
{
    _unknownProduct = name;
}
