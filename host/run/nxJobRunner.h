#pragma once

#include <chrono>
#include <string>

#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxScriptSource.h"
#include "host/report/nxJobStatistics.h"
#include "host/run/nxJobProfiler.h"
#include "host/run/nxRunOptions.h"

// One job of a run: its script's source, its way from the start to the end, and the accounts of what was
// delivered to it. Owned by the server, used on the replay's thread; the statistics outlive it.
class nxJobRunner
{
public:
    nxJobRunner(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
                const std::string& logName, nxScriptSource source, nxJobStatistics& statistics)
        : _source(std::move(source)), _statistics(statistics), _job(services, options, index, logName)
    {
    }

    nxHostJob& GetJob() { return _job; }
    const nxScriptSource& GetSource() const { return _source; }
    nxJobStatistics& GetStatistics() { return _statistics; }

    // Before the load; outlives the runner.
    void SetProfiler(nxJobProfiler* profiler) { _profiler = profiler; }
    // The pulse outlives the runner; null: none is wanted. Both false on a failure, of which the job object
    // knows the text. The script's random numbers are its own, and follow from the seed of the run and the
    // job's name.
    [[nodiscard]] bool Load(const nxRunOptions& options, nxScriptPulse* pulse);
    // Runs OnInit, which the script must define.
    [[nodiscard]] bool Start();
    void NoteDefinedCallbacks();

    bool Defines(nxCallback callback)
    {
        bool& defined = _statistics[callback].defined;
        return defined || (defined = _job.GetObject().IsFunctionDefined(nxGetCallbackName(callback)));
    }
    // Calls the script and accounts for it. False: the script failed. A script that does not define the
    // callback is not called; it may come to define it later, from inside another one.
    template <class Entry, class... Arguments>
    [[nodiscard]] bool Call(nxCallback callback, Entry entry, Arguments&... arguments)
    {
        if (!Defines(callback)) return true;
        nxJobStatistics::Callback& counted = _statistics[callback];
        nxErrorEnum error;
        if (_profiler != nullptr) [[unlikely]]
            _profiler->Begin(nxGetCallbackName(callback));
        if (counted.IsToBeTimed()) {
            const auto start = std::chrono::steady_clock::now();
            error = (_job.GetObject().*entry)(arguments...);
            counted.nanoseconds += std::chrono::nanoseconds(std::chrono::steady_clock::now() - start).count();
            ++counted.timed;
        } else {
            error = (_job.GetObject().*entry)(arguments...);
        }
        if (_profiler != nullptr) [[unlikely]]
            _profiler->End(_job.GetObject());
        ++counted.count;
        if (error.IsSuccess()) return true;
        ++counted.failures;
        return false;
    }

    // The end of the job is wanted when the running callback has returned. The first reason holds.
    void AskEnd(const std::string& reason);
    bool IsEndAsked() const { return !_over && !_endReason.empty(); }
    const std::string& GetEndReason() const { return _endReason; }
    // The job has ended, or is just about to run its OnShutdown: it gets no further events.
    bool IsOver() const { return _over; }
    void SetOver() { _over = true; }

    std::string unknownProduct;  // the last one that the script asked for and nobody knows

private:
    nxScriptSource _source;
    nxJobStatistics& _statistics;
    nxJobProfiler* _profiler = nullptr;
    std::string _endReason;
    bool _over = false;
    nxHostJob _job;
};
