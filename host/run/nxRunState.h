#pragma once

#include <string>

#include "host/report/nxRunStatistics.h"
#include "host/run/nxRunOptions.h"

// What the parts of a run share: what was asked for, what was counted, and whether and why it ends.
struct nxRunState
{
    explicit nxRunState(const nxRunOptions& asked)
        : options(asked), _interrupted(_Get(asked.interrupted)), _shortOfMemory(_Get(asked.shortOfMemory))
    {
    }

    const nxRunOptions& options;
    nxRunStatistics statistics;
    nxRunResult result = nxRunResult::Done;
    std::string end;       // why the run ended
    bool isOver = false;   // a failure ended it, or no job is left
    bool hasTime = false;  // the data hold a row, so there is a recorded time

    bool IsAlone() const { return options.jobs.size() == 1; }
    bool IsInterrupted() const { return _interrupted.load(); }
    bool IsShortOfMemory() const { return _shortOfMemory.load(std::memory_order_relaxed); }
    bool IsEnding() const { return isOver || IsInterrupted() || IsShortOfMemory(); }
    // Ends the run after the current callback. The first reason holds.
    void End(const std::string& reason)
    {
        isOver = true;
        if (end.empty()) end = reason;
    }
    // A script has failed, which a failed input goes before.
    void NoteScriptFailure()
    {
        if (result == nxRunResult::Done) result = nxRunResult::ScriptFailed;
    }

private:
    static const std::atomic<bool>& _Get(const std::atomic<bool>* flag)
    {
        static constexpr std::atomic<bool> never{false};
        return flag == nullptr ? never : *flag;
    }

    // Looked at several times an event, so without a look at whether there are such flags.
    const std::atomic<bool>& _interrupted;
    const std::atomic<bool>& _shortOfMemory;
};
