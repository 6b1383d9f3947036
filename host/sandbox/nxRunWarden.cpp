#include "host/sandbox/nxRunWarden.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <csignal>
#include <cstring>
#include <utility>

#include "host/sandbox/nxRunPlace.h"

bool nxRunWarden::Judge(pid_t child, bool isInterrupted)
{
    const unsigned long long call = _page.pulse.call;
    if (isInterrupted) _page.isInterrupted = true;
    const bool isWaiting = _page.output.isWriting || _page.record.isWriting;
    switch (_deadline.Look(call, _page.isInterrupted, isWaiting, Clock::now())) {
        case nxCallDeadline::Verdict::Fine:
            return true;
        case nxCallDeadline::Verdict::Stop:
            if (std::exchange(_stopped, call) == call) return true;
            _page.pulse.script.isStopWanted = true;
            // Another call is not meant.
            if (_page.pulse.call != call) _page.pulse.script.isStopWanted = false;
            return true;
        case nxCallDeadline::Verdict::Kill:
            break;
    }
    _isKilled = true;
    _killedAfter = _deadline.GetToldTime(Clock::now());
    kill(child, SIGKILL);
    return false;
}

std::string nxRunWarden::DescribeEnd(int status, const std::vector<nxJobOptions>& jobs,
                                     const std::vector<std::string>& modules) const
{
    // Also one that came to its end between the verdict and the kill.
    if (WIFEXITED(status)) return {};
    // Its memory still tells what it did.
    const nxRunPlace place(_page.pulse, jobs, modules);
    const char* const in = place.function.empty() ? "" : " in ";
    if (_isKilled)
        return fmt::format("{} has run for {:.3g} s{}{}; the run ended there", place.callback,
                           _killedAfter.count(), in, place.function);
    return fmt::format("{}{}{}: the run was ended by signal {} ({})",
                       place.callback.empty() ? "outside of the scripts" : place.callback, in, place.function,
                       WTERMSIG(status), strsignal(WTERMSIG(status)));
}
