#include "host/run/nxCallWatch.h"

#include <new>
#include <utility>

void nxCallWatch::Start()
{
    if (!_options.isWatching) return;
    _isStopping = false;
    _thread = std::thread([this] { _Watch(); });
}

void nxCallWatch::Stop()
{
    if (!_thread.joinable()) return;
    {
        const std::scoped_lock lock(_mutex);
        _isStopping = true;
    }
    _wake.notify_one();
    _thread.join();
}

nxScriptPulse* nxCallWatch::GetScriptPulse()
{
#ifdef NX_SCRIPTS_BECOME_CODE
    if (_options.pulse == nullptr && _options.limit == std::chrono::nanoseconds::zero()) return nullptr;
#endif
    return &_pulse.script;
}

void nxCallWatch::_Watch()
{
    using Clock = std::chrono::steady_clock;
    unsigned long long seen = 0;
    Clock::time_point since = Clock::now();
    std::unique_lock lock(_mutex);
    while (!_wake.wait_for(lock, std::chrono::milliseconds(250), [this] { return _isStopping; })) {
        const unsigned long long call = _pulse.call.load(std::memory_order_relaxed);
        const Clock::time_point now = Clock::now();
        const bool isStopped = _StopLateCall(call, now);
        if (call == 0 || call != seen) {
            seen = call;
            since = now;
            continue;
        }
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - since);
        const auto what = nxRunPulse::GetCall(call);
        if (seconds.count() < 1 || !what) continue;
        // Where there is no memory to tell it, the next time will do.
        try {
            _onStall({*what, seconds, isStopped});
        } catch (const std::bad_alloc&) {
        }
    }
}

bool nxCallWatch::_StopLateCall(unsigned long long call, std::chrono::steady_clock::time_point now)
{
    const bool isInterrupted = _options.interrupted != nullptr && _options.interrupted->load();
    if (_deadline.Look(call, isInterrupted, false, now) == nxCallDeadline::Verdict::Fine) return false;
    _pulse.script.isStopWanted = true;
    // Another call is not meant.
    if (_pulse.call.load() != call) _pulse.script.isStopWanted = false;
    return std::exchange(_stopped, call) == call;
}
