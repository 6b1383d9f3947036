#pragma once

#include "base/threads/nxSpinLock.h"

// Holds a spin lock from construction to destruction.
class nxSpinLockGuard
{
public:
    explicit nxSpinLockGuard(nxSpinLock& lock) : _lock(lock) { _lock.Lock(); }
    ~nxSpinLockGuard() { _lock.Unlock(); }
    nxSpinLockGuard(const nxSpinLockGuard&) = delete;
    nxSpinLockGuard& operator=(const nxSpinLockGuard&) = delete;

private:
    nxSpinLock& _lock;
};
