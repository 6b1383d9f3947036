#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "scriptFramework/job/nxCallback.h"

// Notices from a thread of its own that a callback does not return. The run's thread says when it enters and
// leaves one.
class nxCallWatch
{
public:
    struct Stall
    {
        std::size_t job;                     // its index
        std::optional<nxCallback> callback;  // none: the script is being loaded
        std::chrono::seconds since;          // how long it has run, at least 1
    };

    // onStall is called on the watching thread, about four times a second while a callback runs for longer
    // than a second.
    explicit nxCallWatch(std::function<void(const Stall&)> onStall) : _onStall(std::move(onStall)) {}
    ~nxCallWatch() { Stop(); }
    nxCallWatch(const nxCallWatch&) = delete;
    nxCallWatch& operator=(const nxCallWatch&) = delete;

    void Start();
    // onStall is not called any more.
    void Stop();

    // On the run's thread.
    void Enter(std::size_t job, std::optional<nxCallback> callback)
    {
        const unsigned long long what = callback ? static_cast<unsigned long long>(*callback) + 1 : 0;
        _call.store(++_count << 32 | (job & 0xffffff) << 8 | what, std::memory_order_relaxed);
    }
    void Leave() { _call.store(0, std::memory_order_relaxed); }

private:
    void _Watch();

    const std::function<void(const Stall&)> _onStall;
    std::atomic<unsigned long long> _call = 0;  // the call that is under way, which no other equals; 0: none
    unsigned long long _count = 0;              // of calls; of the run's thread
    std::mutex _mutex;
    std::condition_variable _wake;
    bool _isStopping = false;  // by the mutex
    std::thread _thread;
};
