#include "host/run/nxReplayClock.h"

#include <algorithm>
#include <thread>

void nxReplayClock::Begin(long long time)
{
    Set(time);
    _first = time;
    _start = std::chrono::steady_clock::now();
}

// In short sleeps, so that an interruption is seen at once.
void nxReplayClock::_Wait(long long time) const
{
    // Beyond that a wait is for ever, and the sum below would run over.
    constexpr double longest = 4e18;
    const double ahead = std::min(static_cast<double>(time - _first) / _speed, longest);
    const auto until = _start + std::chrono::nanoseconds(static_cast<long long>(ahead));
    while (!_isEnding() && std::chrono::steady_clock::now() < until) {
        _onWait();
        std::this_thread::sleep_until(
            std::min(until, std::chrono::steady_clock::now() + std::chrono::milliseconds(50)));
    }
}
