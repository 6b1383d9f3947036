#pragma once

#include "base/threads/nxMutex.h"

// Holds a mutex from construction to destruction. Where the lock is refused, the thread holds it already,
// and the guard leaves the unlocking to the one that took it.
class nxMutexGuard
{
public:
    explicit nxMutexGuard(nxMutex& mutex) : _mutex(mutex), _locked(mutex.Lock().IsSuccess()) {}
    ~nxMutexGuard()
    {
        if (_locked) static_cast<void>(_mutex.Unlock());
    }
    nxMutexGuard(const nxMutexGuard&) = delete;
    nxMutexGuard& operator=(const nxMutexGuard&) = delete;

    // False where the thread held the mutex already.
    bool IsHolder() const { return _locked; }

private:
    nxMutex& _mutex;
    const bool _locked;
};
