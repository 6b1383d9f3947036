#include "host/run/nxCallWatch.h"

#include <new>

void nxCallWatch::Start()
{
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

void nxCallWatch::_Watch()
{
    using Clock = std::chrono::steady_clock;
    unsigned long long seen = 0;
    Clock::time_point since = Clock::now();
    std::unique_lock lock(_mutex);
    while (!_wake.wait_for(lock, std::chrono::milliseconds(250), [this] { return _isStopping; })) {
        const unsigned long long call = _call.load(std::memory_order_relaxed);
        if (call == 0 || call != seen) {
            seen = call;
            since = Clock::now();
            continue;
        }
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - since);
        if (seconds.count() < 1) continue;
        const unsigned long long what = call & 0xff;
        // Where there is no memory to tell it, the next time will do.
        try {
            _onStall({static_cast<std::size_t>(call >> 8 & 0xffffff),
                      what == 0 ? std::nullopt : std::optional(static_cast<nxCallback>(what - 1)), seconds});
        } catch (const std::bad_alloc&) {
        }
    }
}
