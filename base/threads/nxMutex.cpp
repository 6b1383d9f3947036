#include "base/threads/nxMutex.h"

unsigned int nxMutex::_NumberThread()
{
    static std::atomic<unsigned int> last{0};
    return _thread = last.fetch_add(2, std::memory_order_relaxed) + 2;
}

nxErrorEnum nxMutex::_LockHeld(unsigned int thread, unsigned int holder)
{
    if ((holder & ~Waited) == thread) {
        if (!_isRecursive) return nxError_LockFailed;
        ++_depth;
        return {};
    }
    _Wait(thread);
    return {};
}

// Takes it with the bit set, since nobody knows whether others wait as well.
void nxMutex::_Wait(unsigned int thread)
{
    for (unsigned int holder = 0;;) {
        if (holder == 0) {
            if (_holder.compare_exchange_weak(holder, thread | Waited, std::memory_order_acquire,
                                              std::memory_order_relaxed))
                return;
        } else if ((holder & Waited) != 0 ||
                   _holder.compare_exchange_weak(holder, holder | Waited, std::memory_order_relaxed))
        {
            _holder.wait(holder | Waited, std::memory_order_relaxed);
            holder = 0;
        }
    }
}
