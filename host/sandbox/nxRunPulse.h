#pragma once

#include <atomic>
#include <optional>

#include "host/sandbox/nxRunCall.h"
#include "scriptFramework/lua/nxScriptPulse.h"

// What the scripts of a run are doing just now, for whoever watches them: from a thread of the same process
// or, in shared memory, from another one. The run's thread enters and leaves calls.
struct nxRunPulse
{
    // The call that is under way, which no other call equals: its count in the upper half, nxRunCall in the
    // lower one. 0: none.
    std::atomic<unsigned long long> call = 0;
    unsigned long long count = 0;  // of calls, of all runs that take turns; of the thread that makes them
    nxScriptPulse script;

    static std::optional<nxRunCall> GetCall(unsigned long long call)
    {
        return call == 0 ? std::nullopt : nxRunCall::Unpack(static_cast<unsigned int>(call));
    }
};
