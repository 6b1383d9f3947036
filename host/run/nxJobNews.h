#pragma once

#include <deque>
#include <map>
#include <string>
#include <utility>

#include "host/jobs/nxNewsServices.h"
#include "host/run/nxJobList.h"

// What the jobs of a run are told of each other, first in, first out, and the board of values that they
// share. Used on the run's thread.
class nxJobNews : public nxNewsServices
{
public:
    // Both outlive it.
    nxJobNews(nxRunOutput& output, nxJobList& jobs) : _output(output), _jobs(jobs) {}

    // Puts news of a job up for those that watch it.
    void Announce(nxCallback callback, nxJobRunner& subject);
    // What changed of it since it was published last, likewise.
    void Publish(nxJobRunner& subject);
    bool IsEmpty() const { return _news.empty(); }
    void DeliverNext();
    // Drops the next of the news, which its watcher and the job that it is of have kept up without end.
    void RefuseNext(std::size_t delivered);
    void Clear() { _news.clear(); }

    void NoteShutdown(nxHostJob& job) override;
    void NoteChange() override { _jobs.NoteUnsettled(); }
    std::vector<nxHostJob*> GetOtherJobs(const nxHostJob& job) override;
    nxErrorEnum StopJob(nxHostJob& job, const nxHostJob& by) override;
    std::string GetDynamicParameter(const std::string& tag, const std::string& name) override;
    void SetDynamicParameter(const std::string& tag, const std::string& name,
                             const std::string& value) override
    {
        _board[{tag, name}] = value;
    }

private:
    struct News
    {
        nxCallback callback;
        nxJobRunner* watcher;
        nxWatchedJob* subject;
    };

    News _Take();

    nxRunOutput& _output;
    nxJobList& _jobs;
    std::deque<News> _news;
    std::map<std::pair<std::string, std::string>, std::string> _board;  // by tag and name
};
