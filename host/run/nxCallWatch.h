#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "host/sandbox/nxCallDeadline.h"
#include "host/sandbox/nxRunPulse.h"

// Notices from a thread of its own that a callback does not return, and stops it where that is asked for. The
// run's thread says when it enters and leaves one.
class nxCallWatch
{
public:
    struct Stall
    {
        nxRunCall call;
        std::chrono::seconds since;  // how long it has run, at least 1
        bool isStopped;              // it was asked to stop, which has not helped
    };
    struct Options
    {
        nxRunPulse* pulse = nullptr;  // outlives the watch; null: one of its own
        // What a call may take; 0: any time. Both are left to who else watches the pulse, where somebody
        // does.
        std::chrono::nanoseconds limit{0};
        const std::atomic<bool>* interrupted = nullptr;
        bool isWatching = true;
    };

    // onStall is called on the watching thread, about four times a second while a callback runs for longer
    // than a second.
    nxCallWatch(Options options, std::function<void(const Stall&)> onStall)
        : _options(options), _onStall(std::move(onStall))
    {
    }
    ~nxCallWatch() { Stop(); }
    nxCallWatch(const nxCallWatch&) = delete;
    nxCallWatch& operator=(const nxCallWatch&) = delete;

    // Where nobody wants to be told, no thread watches.
    void Start();
    // onStall is not called any more.
    void Stop();

    // For the scripts. Null where it would cost a script its compiled code, and nobody asked for a limit.
    nxScriptPulse* GetScriptPulse();
    // On the run's thread.
    void Enter(const nxRunCall& call)
    {
        _pulse.call.store(++_pulse.count << 32 | call.Pack(), std::memory_order_relaxed);
    }
    void Leave()
    {
        _pulse.call.store(0, std::memory_order_relaxed);
        // It was meant for this call alone.
        if (_pulse.script.isStopWanted.load(std::memory_order_relaxed)) [[unlikely]]
            _pulse.script.isStopWanted = false;
    }

private:
    void _Watch();
    // True: it had been stopped before.
    bool _StopLateCall(unsigned long long call, std::chrono::steady_clock::time_point now);

    const Options _options;
    const std::function<void(const Stall&)> _onStall;
    nxRunPulse _own;
    nxRunPulse& _pulse = _options.pulse == nullptr ? _own : *_options.pulse;
    nxCallDeadline _deadline{_options.limit};  // of the watching thread
    unsigned long long _stopped = 0;           // the call that was
    std::mutex _mutex;
    std::condition_variable _wake;
    bool _isStopping = false;  // by the mutex
    std::thread _thread;
};
