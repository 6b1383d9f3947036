#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>

#include "host/sandbox/nxRunGuard.h"

// Does a piece of work in a process of its own, which has given away all that a strict run has, is watched as
// that is, and ends after a while in any case. The calling process has no other thread.
class nxTrialProcess
{
public:
    struct Outcome
    {
        std::string text;   // what the work gave
        std::string death;  // why it did not come to its end; empty: it did
    };
    // In the other process.
    using Work = std::function<std::string(nxRunPage& page)>;

    // limit: of the whole work, of real time. guard.interrupted ends it, too.
    static Outcome Do(const nxGuardOptions& guard, std::chrono::nanoseconds limit, const Work& work);
};
