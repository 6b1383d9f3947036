#pragma once

#include <string>

#include "host/run/nxRunOptions.h"
#include "host/sandbox/nxRunGuard.h"

// How a run is guarded: what its process keeps of the user's rights follows from what the run is asked to do.
// Static functions only.
class nxRunSandbox
{
public:
    // What the options ask for that a guarded run cannot do; empty: nothing.
    [[nodiscard]] static std::string FindObstacle(const nxRunOptions& options);
    [[nodiscard]] static nxGuardOptions GetGuardOptions(const nxRunOptions& options);
    // In the guarded process: the scripts get the strict profile and its limits, and the run tells the page
    // what it does, and leaves the watching to the other process. The page outlives the run.
    static void Share(nxRunOptions& options, nxRunPage& page);
};
