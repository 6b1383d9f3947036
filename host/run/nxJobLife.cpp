#include "host/run/nxJobLife.h"

#include "host/run/nxIdleReason.h"

nxJobLife::nxJobLife(nxRunState& state, nxRunOutput& output, nxJobList& jobs, nxJobNews& news,
                     nxTrading& trading, nxRunTimers& timers, nxRunStores& stores,
                     const nxEventSource& source)
    : _state(state),
      _output(output),
      _jobs(jobs),
      _news(news),
      _trading(trading),
      _timers(timers),
      _stores(stores),
      _source(source),
      _jobsToGo(state.options.jobs.size())
{
}

void nxJobLife::Load(nxJobRunner& runner)
{
    if (_jobs.Load(runner)) {
        runner.NoteDefinedCallbacks();
        return;
    }
    _jobs.NoteFailure(runner, std::nullopt);
    End(runner, "the script could not be loaded", true);
}

void nxJobLife::Start(nxJobRunner& runner)
{
    if (runner.IsOver()) return;
    if (!runner.GetStatistics()[nxCallback::OnInit].defined) {
        _output.Complain(runner.GetJob().GetOptions().script + ": defines no function OnInit");
        _state.NoteScriptFailure();
        End(runner, "the script defines no function OnInit", true);
        return;
    }
    _news.Announce(nxCallback::OnVorantJobNew, runner);
    Run();
    if (runner.IsOver() || _state.isOver) return;
    if (!_jobs.Start(runner)) {
        _jobs.NoteFailure(runner, nxCallback::OnInit);
        End(runner, "OnInit failed", true);
        return;
    }
    runner.GetJob().SetRunning(true);
    _output.Record(runner.GetJob(), "jobStarted", {});
    _news.Announce(nxCallback::OnVorantJobStarted, runner);
    _jobs.Settle(runner);
}

void nxJobLife::End(nxJobRunner& runner, const std::string& reason, bool isEarly)
{
    if (runner.IsOver()) return;
    nxJobStatistics& statistics = runner.GetStatistics();
    statistics.end = reason;
    const bool hasStarted = statistics[nxCallback::OnInit].count != 0;
    if (hasStarted && !statistics.IsAnyDelivered())
        statistics.nothingDelivered = nxGetIdleReason(runner, _source.GetProducts(), isEarly);
    runner.SetOver();
    if (--_jobsToGo == 0) _state.End(_state.IsAlone() ? reason : "all jobs have ended");

    // What others are told of the job's last words comes before the news of its end.
    const bool wasHeld = Hold(true);
    if (hasStarted) _jobs.Call(nxCallback::OnShutdown, runner, &nxAlgoJobObject::OnShutdown);
    runner.GetJob().GetObject().StopJob();
    runner.GetJob().SetRunning(false);
    _timers.StopAll(runner.GetJob());
    _trading.PullOrders(runner.GetJob());
    if (!_isAllEnding) _RecordEnd(runner);
    _news.Publish(runner);
    _news.Announce(nxCallback::OnVorantJobStopped, runner);
    Hold(wasHeld);
    Run();
}

void nxJobLife::EndAll(const std::string& reason, bool isEarly)
{
    Hold(true);
    _isAllEnding = true;
    std::vector<nxJobRunner*> ending;
    for (const auto& runner : _jobs)
        if (!runner->IsOver()) ending.push_back(runner.get());
    for (nxJobRunner* runner : ending)
        End(*runner, runner->IsEndAsked() ? runner->GetEndReason() : reason, isEarly);
    _trading.Finish();
    for (nxJobRunner* runner : ending)
        _RecordEnd(*runner);
}

void nxJobLife::_RecordEnd(nxJobRunner& runner)
{
    _output.Record(runner.GetJob(), "jobStopped", {{"reason", runner.GetStatistics().end}});
}

void nxJobLife::_EndAsked()
{
    bool hasEnded = false;
    for (const auto& runner : _jobs) {
        if (!runner->IsEndAsked()) continue;
        End(*runner, runner->GetEndReason(), true);
        hasEnded = true;
    }
    if (hasEnded) _stores.Save();
}

void nxJobLife::Settle(nxJobRunner& runner)
{
    _news.Publish(runner);
    Run();
}

void nxJobLife::Run()
{
    if (_isHeld) return;
    _isHeld = true;
    std::size_t news = 0;
    do {
        _EndAsked();
        _trading.DeliverPositions();
    } while (!_state.IsEnding() && _DeliverNext(news));
    _news.Clear();
    _isHeld = false;
}

bool nxJobLife::_DeliverNext(std::size_t& news)
{
    // Scripts that answer each other's news would hold the recorded time for ever.
    constexpr std::size_t mostForJob = 1000;
    if (_trading.IsAnswerDue()) {
        _trading.DeliverAnswer();
    } else if (_news.IsEmpty()) {
        return false;
    } else if (news == mostForJob * _jobs.GetCount()) {
        _news.RefuseNext(news);
        return false;
    } else {
        _news.DeliverNext();
        ++news;
    }
    return true;
}
