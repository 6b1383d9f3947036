#pragma once

#include <mutex>
#include <optional>
#include <ostream>
#include <string>

#include "host/feed/nxRecordedEvents.h"
#include "host/jobs/nxOutputServices.h"
#include "host/report/nxProgressBar.h"
#include "host/report/nxRunEntries.h"
#include "host/run/nxCallWatch.h"
#include "host/run/nxRunClock.h"
#include "host/run/nxRunState.h"

// What a run writes while it goes on: the scripts' log to out, failures to err, the record to its file, and
// the progress bar, which gives way to each line. Used on the run's thread, but for NoteStall.
class nxRunOutput : public nxOutputServices
{
public:
    // All outlive it.
    nxRunOutput(nxRunState& state, const nxRunClock& clock, std::ostream& out, std::ostream& err);

    // Begins the record, where one is asked for, and makes it whole. Null, or why that cannot be: "FILE:
    // reason".
    [[nodiscard]] std::optional<std::string> OpenRecord();
    [[nodiscard]] std::optional<std::string> CloseRecord() { return _record.Close(); }

    void LogText(const nxLaunchedJob& job, const std::string& text) override;
    void Record(const nxLaunchedJob& job, const char* type, nxRunRecord::Fields fields) override;
    // Of what happened at a time of its own, to a job or, without a name, to the run.
    void RecordAt(long long time, const std::string& job, const char* type, nxRunRecord::Fields fields);
    // The same of the run itself, now.
    void RecordRun(const char* type, nxRunRecord::Fields fields) { RecordAt(_clock.Get(), "", type, fields); }
    void RecordNow(const std::string& job, const char* type, nxRunRecord::Fields fields)
    {
        RecordAt(_clock.Get(), job, type, fields);
    }
    bool IsRecording() const override
    {
        return _record.IsOpen() || _entries != nullptr || _state.options.follower != nullptr;
    }
    // There is a file of it.
    bool HasRecord() const { return _record.IsOpen(); }
    // Who is told what is recorded, too; outlives it.
    void SetEntries(nxRunEntries* entries) { _entries = entries; }

    // A line for the person who watches the run, of the run itself.
    void Log(const std::string& text);
    // A line on standard error: what is wrong, or where a file is.
    void Complain(const std::string& text);
    void WriteFailure(const nxJobStatistics::Failure& failure, const std::string& job);
    void ShowProgress(const nxRecordedEvents& source);
    void EraseProgress();
    // Hands on what is written so far. False: it cannot be written.
    bool Flush();
    // A callback does not return: what was logged before is shown, and a watcher told. On any thread.
    void NoteStall(const nxCallWatch::Stall& stall);
    // For what is written after the last callback.
    std::ostream& GetOut() { return _out; }
    std::ostream& GetErr() { return _err; }

private:
    nxRunState& _state;
    const nxRunClock& _clock;
    std::ostream& _out;
    std::ostream& _err;
    std::mutex _mutex;  // guards the two streams and the bar while callbacks run
    nxProgressBar _progress;
    bool _hasToldToKill = false;
    nxRunRecord _record;
    nxRunEntries* _entries = nullptr;
};
