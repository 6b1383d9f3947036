#include "host/run/nxJobNews.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

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

}  // namespace

void nxJobNews::Announce(nxCallback callback, nxJobRunner& subject)
{
    for (const auto& watcher : _jobs) {
        if (watcher->IsOver() || watcher.get() == &subject) continue;
        if (nxWatchedJobs* const watched = watcher->GetJob().GetWatchedJobs())
            _news.push_back({callback, watcher.get(), watched->Find(subject.GetJob())});
    }
}

void nxJobNews::Publish(nxJobRunner& subject)
{
    const nxHostJob::Changes changes = subject.GetJob().TakeChanges();
    if (!changes.status && !changes.rest) return;
    for (const auto& watcher : _jobs) {
        nxWatchedJobs* const watched = watcher->GetJob().GetWatchedJobs();
        if (watched == nullptr || watcher.get() == &subject) continue;
        nxWatchedJob* const job = watched->Find(subject.GetJob());
        job->Refresh();
        if (!job->IsSubscribed() || watcher->IsOver()) continue;
        if (changes.status) _news.push_back({nxCallback::OnVorantJobStatusUpdate, watcher.get(), job});
        if (changes.rest) _news.push_back({nxCallback::OnVorantJobUpdate, watcher.get(), job});
    }
}

nxJobNews::News nxJobNews::_Take()
{
    const News news = _news.front();
    _news.pop_front();
    return news;
}

void nxJobNews::DeliverNext()
{
    const News news = _Take();
    const auto entry =
        std::ranges::find_if(NewsEntries, [&](const auto& known) { return known.callback == news.callback; });
    _jobs.Deliver(news.callback, *news.watcher, entry->entry, *news.subject);
}

void nxJobNews::RefuseNext(std::size_t delivered)
{
    const News news = _Take();
    _jobs.NoteFailure(
        *news.watcher, news.callback,
        fmt::format("jobs {} and {} answer each other without end: {} callbacks at one recorded time",
                    news.subject->GetWatched().GetName(), news.watcher->GetJob().GetName(), delivered));
}

void nxJobNews::NoteShutdown(nxHostJob& job)
{
    _jobs.Get(job).AskEnd("the script shut down");
    _jobs.NoteUnsettled();
}

std::vector<nxHostJob*> nxJobNews::GetOtherJobs(const nxHostJob& job)
{
    std::vector<nxHostJob*> others;
    for (const auto& runner : _jobs)
        if (&runner->GetJob() != &job) others.push_back(&runner->GetJob());
    return others;
}

nxErrorEnum nxJobNews::StopJob(nxHostJob& job, const nxHostJob& by)
{
    _output.Record(by, "stop", {{"name", job.GetName()}});
    nxJobRunner& runner = _jobs.Get(job);
    if (runner.IsOver()) return nxError_GeneralFailure;
    runner.AskEnd("stopped by " + by.GetName());
    _jobs.NoteUnsettled();
    return {};
}

std::string nxJobNews::GetDynamicParameter(const std::string& tag, const std::string& name)
{
    const auto found = _board.find({tag, name});
    return found == _board.end() ? std::string() : found->second;
}
