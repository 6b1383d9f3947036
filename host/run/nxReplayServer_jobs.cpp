// The jobs of a run: how they start and end, what went wrong in them, and what they are told of each other.

#include <fmt/format.h>

#include <algorithm>

#include "host/report/nxRunSummary.h"
#include "host/run/nxReplayServer.h"

namespace {

// Callbacks, for each job of the run, that the news after one callback may lead to.
constexpr std::size_t MostNews = 1000;

// How each kind of news reaches a script.
constexpr struct
{
    nxCallback callback;
    nxErrorEnum (nxAlgoJobObject::*entry)(nxAlgoVorantJobObject&);
} NewsEntries[] = {
    {nxCallback::OnVorantJobNew, &nxAlgoJobObject::OnJobNew},
    {nxCallback::OnVorantJobStarted, &nxAlgoJobObject::OnJobStarted},
    {nxCallback::OnVorantJobStopped, &nxAlgoJobObject::OnJobStopped},
    {nxCallback::OnVorantJobStatusUpdate, &nxAlgoJobObject::OnJobStatusUpdate},
    {nxCallback::OnVorantJobUpdate, &nxAlgoJobObject::OnJobUpdate},
};

bool HasRows(const nxFeedProduct& product)
{
    return product.Has(nxFeedKind::Quote) || product.Has(nxFeedKind::Depth) || product.Has(nxFeedKind::Bar);
}

}  // namespace

void nxReplayServer::_LoadJob(nxJobRunner& runner)
{
    if (runner.Load(_options.memoryLimit)) {
        runner.NoteDefinedCallbacks();
        return;
    }
    _NoteFailure(runner, std::nullopt);
    _EndJob(runner, "the script could not be loaded", true);
}

void nxReplayServer::_StartJob(nxJobRunner& runner)
{
    if (runner.IsOver()) return;
    if (!runner.GetStatistics()[nxCallback::OnInit].defined) {
        _err << runner.GetJob().GetOptions().script << ": defines no function OnInit\n";
        _result = nxRunResult::ScriptFailed;
        _EndJob(runner, "the script defines no function OnInit", true);
        return;
    }
    _Announce(nxCallback::OnVorantJobNew, runner);
    _DeliverNews();
    if (runner.IsOver() || _isOver) return;
    if (!runner.Start()) {
        _NoteFailure(runner, nxCallback::OnInit);
        _EndJob(runner, "OnInit failed", true);
        return;
    }
    runner.GetJob().SetRunning(true);
    Record(runner.GetJob(), "jobStarted", {});
    _Announce(nxCallback::OnVorantJobStarted, runner);
    _Settle(runner);
}

void nxReplayServer::_EndJob(nxJobRunner& runner, const std::string& reason, bool isEarly)
{
    if (runner.IsOver()) return;
    nxJobStatistics& statistics = runner.GetStatistics();
    statistics.end = reason;
    const bool hasStarted = statistics[nxCallback::OnInit].count != 0;
    if (hasStarted && !statistics.IsAnyDelivered())
        statistics.nothingDelivered = _ExplainNothing(runner, isEarly);
    runner.SetOver();
    if (--_jobsToGo == 0) _EndRun(_IsAlone() ? reason : "all jobs have ended");

    // What others are told of the job's last words comes before the news of its end.
    const bool wasSettling = std::exchange(_isSettling, true);
    if (hasStarted) _Call(nxCallback::OnShutdown, runner, &nxAlgoJobObject::OnShutdown);
    runner.GetJob().GetObject().StopJob();
    runner.GetJob().SetRunning(false);
    _timers.StopAll(runner.GetJob());
    _PullOrders(runner.GetJob());
    Record(runner.GetJob(), "jobStopped", {{"reason", reason}});
    _Publish(runner);
    _Announce(nxCallback::OnVorantJobStopped, runner);
    _isSettling = wasSettling;
    if (!wasSettling) _DeliverNews();
}

void nxReplayServer::_EndAskedJobs()
{
    bool hasEnded = false;
    for (const auto& runner : _runners) {
        if (!runner->IsEndAsked()) continue;
        _EndJob(*runner, runner->GetEndReason(), true);
        hasEnded = true;
    }
    if (hasEnded) _SaveStores();
}

void nxReplayServer::_NoteFailure(nxJobRunner& runner, std::optional<nxCallback> callback,
                                  const std::string& message)
{
    if (_result == nxRunResult::Done) _result = nxRunResult::ScriptFailed;
    nxScriptFailure what{message, std::nullopt};
    if (message.empty()) what = runner.GetSource().Explain(runner.GetJob().GetObject().GetErrorText());
    if (_options.memoryLimit != 0 && what.message.ends_with("not enough memory"))
        what.message += fmt::format("; the script may hold {:.3g} MiB",
                                    static_cast<double>(_options.memoryLimit) / (1 << 20));
    const std::string& name = runner.GetJob().GetName();
    Record(runner.GetJob(), "callbackFailure",
           {{"callback", callback ? nxGetCallbackName(*callback) : ""}, {"text", what.message}});
    // A job that did not start leaves the others alone.
    if (!_options.continueOnError && callback && callback != nxCallback::OnInit)
        _EndRun(_IsAlone() ? "a callback failed" : "a callback of " + name + " failed");

    std::vector<nxJobStatistics::Failure>& failures = runner.GetStatistics().failures;
    for (nxJobStatistics::Failure& known : failures) {
        if (known.callback != callback || known.what.message != what.message) continue;
        ++known.count;
        return;
    }
    // A script whose every message differs would otherwise grow the list without end.
    constexpr std::size_t mostKept = 100;
    if (failures.size() >= mostKept) return;
    failures.push_back({std::move(what), callback, _hasTime ? std::optional(_time.Get()) : std::nullopt, 1});
    _progress.Erase();
    _out.flush();
    nxRunSummary::WriteFailure(_err, failures.back(), _IsAlone() ? std::string() : name);
}

void nxReplayServer::_Announce(nxCallback callback, nxJobRunner& subject)
{
    for (const auto& watcher : _runners) {
        if (watcher->IsOver() || watcher.get() == &subject) continue;
        if (nxWatchedJobs* const watched = watcher->GetJob().GetWatchedJobs())
            _news.push_back({callback, watcher.get(), watched->Find(subject.GetJob())});
    }
}

void nxReplayServer::_Publish(nxJobRunner& subject)
{
    const nxHostJob::Changes changes = subject.GetJob().TakeChanges();
    if (!changes.status && !changes.rest) return;
    for (const auto& watcher : _runners) {
        nxWatchedJobs* const watched = watcher->GetJob().GetWatchedJobs();
        if (watched == nullptr || watcher.get() == &subject) continue;
        nxWatchedJob* const job = watched->Find(subject.GetJob());
        job->Refresh();
        if (!job->IsSubscribed() || watcher->IsOver()) continue;
        if (changes.status) _news.push_back({nxCallback::OnVorantJobStatusUpdate, watcher.get(), job});
        if (changes.rest) _news.push_back({nxCallback::OnVorantJobUpdate, watcher.get(), job});
    }
}

void nxReplayServer::_Settle(nxJobRunner& runner)
{
    _isUnsettled = false;
    _Publish(runner);
    if (!_isSettling) _DeliverNews();
}

// A subscription to positions begins with the one of now.
void nxReplayServer::_DeliverPositions()
{
    for (; !_positions.empty() && !_IsEnding(); _positions.pop_front()) {
        const auto [runner, product] = _positions.front();
        _Deliver(nxCallback::OnPosition, *runner, &nxAlgoJobObject::OnPosition, product->GetPositionEvent());
    }
}

void nxReplayServer::_DeliverNews()
{
    _isSettling = true;
    _EndAskedJobs();
    _DeliverPositions();
    // Scripts that answer each other's news, or the answers to their own orders, would hold the recorded time
    // for ever.
    for (std::size_t delivered = 0; !_IsEnding(); ++delivered) {
        const bool isEndless = delivered == MostNews * _runners.size();
        if (_IsAnswerDue()) {
            if (isEndless) {
                nxJobRunner& runner = _GetRunner(FindOrder(_answer->order)->GetOwner());
                _NoteFailure(runner, nxCallback::OnOrderWorking,
                             fmt::format("orders are sent upon the answers to orders without end: {} answers "
                                         "at one recorded time",
                                         delivered));
                runner.AskEnd("its orders had no end");
                _EndAskedJobs();
                break;
            }
            _DeliverAnswer();
        } else if (!_news.empty()) {
            const News news = _news.front();
            _news.pop_front();
            if (isEndless) {
                _NoteFailure(*news.watcher, news.callback,
                             fmt::format("jobs {} and {} answer each other without end: {} callbacks at one "
                                         "recorded time",
                                         news.subject->GetWatched().GetName(),
                                         news.watcher->GetJob().GetName(), delivered));
                break;
            }
            const auto entry = std::ranges::find_if(
                NewsEntries, [&](const auto& known) { return known.callback == news.callback; });
            _Deliver(news.callback, *news.watcher, entry->entry, *news.subject);
        } else {
            break;
        }
        _EndAskedJobs();
        _DeliverPositions();
    }
    _news.clear();
    _isSettling = false;
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

std::string nxReplayServer::_ExplainNothing(nxJobRunner& runner, bool isEarly) const
{
    const std::string names = _GetNames();
    nxHostJob& job = runner.GetJob();
    if (names.empty()) return "the data holds no rows";
    if (!runner.unknownProduct.empty())
        return "the script asked for product " + runner.unknownProduct +
               ", which is not in the data; it holds " + names;
    // A script that was ended early may have had its reasons; the summary tells how it ended. One that looks
    // at other jobs needs no product.
    if (isEarly || job.GetWatchedJobs() != nullptr) return {};
    if (job.GetProducts().empty()) return "the script asked for no product; the data holds " + names;
    if (!job.HasSubscribed())
        return "the script subscribed to nothing: call subscribePrice() or subscribeMarketDepth() of a "
               "product";
    std::string reason;
    for (const auto& [name, product] : job.GetProducts()) {
        if (!reason.empty()) break;
        const nxFeedProduct* known = _feed.GetProducts().Find(name);
        const auto lacks = [&](nxCallback callback, bool wanted) {
            return wanted && !runner.GetStatistics()[callback].defined;
        };
        const bool hasRows = known != nullptr && HasRows(*known);
        if (!hasRows && !product->GetMarket().IsStrategy()) {
            reason = "the data holds nothing of product " + name + "; it holds " + names;
        } else if (lacks(nxCallback::OnPrice, product->Wants(nxMarketEvent::Price))) {
            reason = "the script subscribed to the prices of " + name + " but defines no function OnPrice";
        } else if (lacks(nxCallback::OnMarketDepth, product->Wants(nxMarketEvent::Depth))) {
            reason =
                "the script subscribed to the depth of " + name + " but defines no function OnMarketDepth";
        } else if (lacks(nxCallback::OnTradeWindowEvent, product->Wants(nxMarketEvent::TradeWindow))) {
            reason = "the script started a trade window of " + name +
                     " but defines no function OnTradeWindowEvent";
        } else if (product->Wants(nxMarketEvent::Depth)) {
            reason = "the script subscribed to the depth of " + name + ", of which the data holds none";
        } else if (lacks(nxCallback::OnProductState, product->Wants(nxMarketEvent::State))) {
            reason =
                "the script subscribed to the state of " + name + " but defines no function OnProductState";
        } else if (!hasRows) {
            reason = "the legs of " + name + " never had quotes of one side together";
        }
    }
    return reason;
}
