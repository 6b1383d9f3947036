#pragma once

#include <chrono>
#include <functional>

#include "host/run/nxRunClock.h"

// The recorded time, which jumps from event to event or keeps a pace beside the real one.
class nxReplayClock : public nxRunClock
{
public:
    // speed: recorded seconds for each real one; 0: as fast as it can. isEnding() breaks a wait off; onWait()
    // is called when one begins, and again about twenty times a second.
    nxReplayClock(double speed, std::function<bool()> isEnding, std::function<void()> onWait)
        : _speed(speed), _isEnding(std::move(isEnding)), _onWait(std::move(onWait))
    {
    }

    // That recorded time is now.
    void Begin(long long time);
    void WaitFor(long long time) override
    {
        if (_speed > 0.0) _Wait(time);
    }
    // Real, since Begin.
    std::chrono::nanoseconds GetElapsed() const { return std::chrono::steady_clock::now() - _start; }

private:
    void _Wait(long long time) const;

    const double _speed;
    const std::function<bool()> _isEnding;
    const std::function<void()> _onWait;
    long long _first = 0;
    std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};
