#pragma once

#include <atomic>

#include "base/enums/nxErrorEnum.h"

// A mutual exclusion between threads. nxMutex(true) may be locked again by the thread that holds it and is
// free after as many unlocks; the default one refuses the second lock with an error instead of hanging. Take
// it through nxMutexGuard. Must outlive every guard and may not be destroyed while locked.
//
// Eight bytes: there is one in each order of a run, and the system's own takes forty.
class nxMutex
{
public:
    explicit nxMutex(bool recursive = false) : _isRecursive(recursive) {}
    nxMutex(const nxMutex&) = delete;
    nxMutex& operator=(const nxMutex&) = delete;

    // nxError_LockFailed when a mutex that is not recursive is already held by this thread.
    [[nodiscard]] nxErrorEnum Lock();
    // nxError_UnlockFailed when this thread does not hold the mutex.
    [[nodiscard]] nxErrorEnum Unlock();

private:
    void _Wait(unsigned int thread);

    // The number of the thread that holds it, with the lowest bit set when others may be waiting; 0: free.
    std::atomic<unsigned int> _holder{0};
    unsigned int _depth : 31 = 0;  // locks beyond the first; the holder's
    const unsigned int _isRecursive : 1;
};
