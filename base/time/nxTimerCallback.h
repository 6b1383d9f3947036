#pragma once

// What a timer calls. Who runs the timer calls OnTimer on its own thread, and deletes the callback with the
// timer when that is wanted.
class nxTimerCallback
{
public:
    virtual ~nxTimerCallback() = default;
    virtual void OnTimer() = 0;
    virtual bool ShouldAutoDeleteCallback() const { return false; }
};
