#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

#include "host/jobs/nxJobOptions.h"
#include "host/sandbox/nxCallDeadline.h"
#include "host/sandbox/nxRunPage.h"

// Watches the process of a guarded run by its page: stops and in the end kills what does not return, and says
// where the scripts were when it died. Used by one thread of another process.
class nxRunWarden
{
public:
    // A limit of 0 is none. The page outlives the warden.
    nxRunWarden(nxRunPage& page, std::chrono::nanoseconds callbackLimit)
        : _page(page), _deadline(callbackLimit)
    {
    }

    // Called about twenty times a second while the process lives. isInterrupted: the run is to end. False:
    // it was killed, and is to be waited for.
    [[nodiscard]] bool Judge(pid_t child, bool isInterrupted);

    bool HasKilled() const { return _isKilled; }
    // Why it came to its end by a kill of the warden, or by a signal, in one line that names the script.
    // Empty: by neither. The jobs are those of the run whose turn it was.
    std::string DescribeEnd(int status, const std::vector<nxJobOptions>& jobs,
                            const std::vector<std::string>& modules) const;

private:
    using Clock = std::chrono::steady_clock;

    nxRunPage& _page;
    nxCallDeadline _deadline;
    unsigned long long _stopped = 0;  // the call that was asked to stop
    bool _isKilled = false;
    std::chrono::duration<double> _killedAfter{0};
};
