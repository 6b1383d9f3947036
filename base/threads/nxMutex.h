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
    [[nodiscard]] nxErrorEnum Lock()
    {
        const unsigned int thread = _GetThread();
        unsigned int holder = 0;
        if (_holder.compare_exchange_strong(holder, thread, std::memory_order_acquire,
                                            std::memory_order_relaxed)) [[likely]]
            return {};
        return _LockHeld(thread, holder);
    }
    // nxError_UnlockFailed when this thread does not hold the mutex.
    [[nodiscard]] nxErrorEnum Unlock()
    {
        if ((_holder.load(std::memory_order_relaxed) & ~Waited) != _GetThread()) [[unlikely]]
            return nxError_UnlockFailed;
        if (_depth != 0) {
            --_depth;
        } else if ((_holder.exchange(0, std::memory_order_release) & Waited) != 0) [[unlikely]] {
            _holder.notify_one();
        }
        return {};
    }

private:
    static constexpr unsigned int Waited = 1;

    // Of the calling thread, with the lowest bit free; never 0.
    static unsigned int _GetThread() { return _thread != 0 ? _thread : _NumberThread(); }
    static unsigned int _NumberThread();
    nxErrorEnum _LockHeld(unsigned int thread, unsigned int holder);
    void _Wait(unsigned int thread);

    static constinit inline thread_local unsigned int _thread = 0;

    // The number of the thread that holds it, with the lowest bit set when others may be waiting; 0: free.
    std::atomic<unsigned int> _holder{0};
    unsigned int _depth : 31 = 0;  // locks beyond the first; the holder's
    const unsigned int _isRecursive : 1;
};
