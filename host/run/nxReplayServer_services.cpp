// What the server does for its jobs while their scripts run.

#include <algorithm>
#include <cmath>
#include <string_view>

#include "base/log/nxLogMessage.h"
#include "host/feed/nxFeedTime.h"
#include "host/run/nxReplayServer.h"

nxMarketProduct* nxReplayServer::FindMarket(const std::string& name)
{
    const nxFeedProductTable& products = _feed.GetProducts();
    for (unsigned int i = 0; i < products.GetCount(); ++i)
        if (products.Get(i).GetName() == name) return &_GetMarket(i).product;
    return nullptr;
}

void nxReplayServer::Describe(nxHostProduct& product)
{
    for (std::size_t i = 0; i < _markets.size(); ++i) {
        const Market* const market = _markets[i].get();
        if (market == nullptr || &market->product != &product.GetMarket()) continue;
        product.SetMarketIndex(static_cast<unsigned int>(i));
        product.Describe(market->tickSize);
        product.SetAccount(market->none);
        product.ShowPosition(market->everybody);
    }
    for (const nxProductDescription& description : _options.products) {
        if (description.name != product.GetMarket().GetName()) continue;
        product.SetExchange(description.exchange);
        if (description.pointValue.IsValid())
            product.SetPointValue(nxMoney(description.pointValue, description.currency));
    }
}

void nxReplayServer::NoteSubscription(nxHostJob& job, nxHostProduct& product, nxMarketEvent event)
{
    Market& market = _GetMarketOf(product);
    market.subscribers[job.GetIndex()] = &product;
    if (event == nxMarketEvent::TradeWindow) market.hasWindows = true;
    if (event == nxMarketEvent::TradeVolumes)
        product.UpdateTradeVolumes(product.GetMarket().GetTradeVolumes());
    if (event == nxMarketEvent::Position) {
        _positions.emplace_back(&_GetRunner(job), &product);
        _isUnsettled = true;
    }
}

void nxReplayServer::LogText(nxHostJob& job, const std::string& text)
{
    _Log(_IsAlone() ? text : job.GetLogPrefix() + text);
}

void nxReplayServer::_Log(const std::string& text)
{
    _progress.Erase();
    constexpr std::size_t toMilliseconds = std::string_view("YYYYMMDD:HH:MM:SS.mmm").size();
    const std::string stamp = _hasTime ? nxFeedTime::GetAsString(_time.Get()) : std::string();
    _out << std::string_view(stamp).substr(0, toMilliseconds) << "  " << text << "\n";
}

void nxReplayServer::Record(const nxHostJob& job, const char* type, nxRunRecord::Fields fields)
{
    if (!_record.IsOpen()) return;
    const auto time =
        _hasTime ? std::optional(nxFeedTime::GetAsString(_time.Get())) : std::optional<std::string>();
    _record.Write(time, job.GetName(), type, fields);
    if (_record.HasFailed()) _EndRun("the record cannot be written");
}

void nxReplayServer::StartTimer(nxHostJob& job, const std::string& name, unsigned int milliseconds)
{
    constexpr long long nanosecondsPerMillisecond = 1'000'000;
    // A job that is ending hears no timer.
    if (!_GetRunner(job).IsOver())
        _timers.Start(job, name, _time.Get(), milliseconds * nanosecondsPerMillisecond);
}

void nxReplayServer::StopTimer(nxHostJob& job, const std::string& name)
{
    _timers.Stop(job, name);
}

void nxReplayServer::StartTimer(nxHostJob& job, nxTimerCallback& callback, double seconds)
{
    // No shorter than a script's own timers, lest the recorded time stand still; no longer than it reaches.
    constexpr double shortest = 1e-3;
    constexpr double longest = 9e9;
    if (!_GetRunner(job).IsOver())
        _timers.Start(job, callback, _time.Get(), std::llround(std::clamp(seconds, shortest, longest) * 1e9));
}

void nxReplayServer::StopTimer(nxHostJob& job, nxTimerCallback& callback)
{
    _timers.Stop(job, callback);
}

void nxReplayServer::DeliverWindow(nxHostJob& job, nxAlgoEventWindowObject& window)
{
    if (!_IsEnding())
        _Deliver(nxCallback::OnTradeWindowEvent, _GetRunner(job), &nxAlgoJobObject::OnEventWindow, window);
}

void nxReplayServer::NoteShutdown(nxHostJob& job)
{
    _GetRunner(job).AskEnd("the script shut down");
    _isUnsettled = true;
}

void nxReplayServer::NoteChange(nxHostJob&)
{
    _isUnsettled = true;
}

void nxReplayServer::NoteUnknownProduct(nxHostJob& job, const std::string& name)
{
    _GetRunner(job).unknownProduct = name;
}

std::vector<nxHostJob*> nxReplayServer::GetOtherJobs(const nxHostJob& job)
{
    std::vector<nxHostJob*> others;
    for (const auto& runner : _runners)
        if (&runner->GetJob() != &job) others.push_back(&runner->GetJob());
    return others;
}

nxErrorEnum nxReplayServer::StopJob(nxHostJob& job, const nxHostJob& by)
{
    Record(by, "stop", {{"name", job.GetName()}});
    nxJobRunner& runner = _GetRunner(job);
    if (runner.IsOver()) return nxError_GeneralFailure;
    runner.AskEnd("stopped by " + by.GetName());
    _isUnsettled = true;
    return {};
}

std::string nxReplayServer::GetDynamicParameter(const std::string& tag, const std::string& name)
{
    const auto found = _board.find({tag, name});
    return found == _board.end() ? std::string() : found->second;
}

void nxReplayServer::SetDynamicParameter(const std::string& tag, const std::string& name,
                                         const std::string& value)
{
    _board[{tag, name}] = value;
}

nxAlgoDataStoreObject* nxReplayServer::GetDataStore(nxHostJob& job, const std::string& name, bool create)
{
    if (!_stores.IsOpen()) {
        // Only who looks whether there is one may go on without.
        nxLogMessage(create ? nxLogLevel::Error : nxLogLevel::Info, job.GetLogPrefix(),
                     "getDataStore. no store ", name,
                     ": the server was given no directory for data stores (--store)");
        return nullptr;
    }
    std::string failure;
    nxAlgoDataStoreObject* const store = _stores.Get(name, create, failure);
    if (!failure.empty()) {
        nxLogMessage(nxLogLevel::Error, job.GetLogPrefix(), failure);
        _storeFailure = failure;
    }
    return store;
}

void nxReplayServer::_SaveStores(bool isLast)
{
    const std::optional<std::string> failure = _stores.IsOpen() ? _stores.Save() : std::nullopt;
    if (!isLast) {
        if (failure) nxLogMessage(nxLogLevel::Error, *failure);
        return;
    }
    for (const std::string& text : {_storeFailure, failure.value_or("")}) {
        if (text.empty()) continue;
        _err << text << "\n";
        if (_result == nxRunResult::Done) _result = nxRunResult::ScriptFailed;
    }
}
