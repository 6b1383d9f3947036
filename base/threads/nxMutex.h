#pragma once

#include <pthread.h>

#include "base/enums/nxErrorEnum.h"

// A mutual exclusion between threads. nxMutex(true) may be locked again by the thread that holds it and is
// free after as many unlocks; the default one refuses the second lock with an error instead of hanging. Take
// it through nxMutexGuard. Must outlive every guard and may not be destroyed while locked.
class nxMutex
{
public:
    explicit nxMutex(bool recursive = false);
    ~nxMutex();
    nxMutex(const nxMutex&) = delete;
    nxMutex& operator=(const nxMutex&) = delete;

    // nxError_LockFailed when a mutex that is not recursive is already held by this thread.
    [[nodiscard]] nxErrorEnum Lock();
    // nxError_UnlockFailed when this thread does not hold the mutex.
    [[nodiscard]] nxErrorEnum Unlock();

private:
    pthread_mutex_t _mutex;
};
