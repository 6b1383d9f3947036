#include "base/threads/nxMutex.h"

nxMutex::nxMutex(bool recursive)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    // The checking kind tells a second lock by the same thread from a wait that would never end.
    pthread_mutexattr_settype(&attributes, recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

nxMutex::~nxMutex()
{
    pthread_mutex_destroy(&_mutex);
}

nxErrorEnum nxMutex::Lock()
{
    return pthread_mutex_lock(&_mutex) == 0 ? nxErrorEnum() : nxErrorEnum(nxError_LockFailed);
}

nxErrorEnum nxMutex::Unlock()
{
    return pthread_mutex_unlock(&_mutex) == 0 ? nxErrorEnum() : nxErrorEnum(nxError_UnlockFailed);
}
