#pragma once

#include <string>

#include "host/report/nxRunStatistics.h"
#include "host/run/nxRunOptions.h"

// What the parts of a run share: what was asked for, what was counted, and whether and why it ends.
struct nxRunState
{
    explicit nxRunState(const nxRunOptions& asked) : options(asked) {}

    const nxRunOptions& options;
    nxRunStatistics statistics;
    nxRunResult result = nxRunResult::Done;
    std::string end;       // why the run ended
    bool isOver = false;   // a failure ended it, or no job is left
    bool hasTime = false;  // the data hold a row, so there is a recorded time

    bool IsAlone() const { return options.jobs.size() == 1; }
    bool IsInterrupted() const { return options.interrupted != nullptr && options.interrupted->load(); }
    bool IsShortOfMemory() const
    {
        return options.shortOfMemory != nullptr && options.shortOfMemory->load(std::memory_order_relaxed);
    }
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
};
