#include "base/threads/nxMutex.h"

namespace {

constexpr unsigned int Waited = 1;

// Of the calling thread, with the lowest bit free; never 0.
unsigned int GetThread()
{
    static std::atomic<unsigned int> last{0};
    thread_local const unsigned int number = last.fetch_add(2, std::memory_order_relaxed) + 2;
    return number;
}

}  // namespace

nxErrorEnum nxMutex::Lock()
{
    const unsigned int thread = GetThread();
    unsigned int free = 0;
    if (_holder.compare_exchange_strong(free, thread, std::memory_order_acquire, std::memory_order_relaxed))
        [[likely]]
        return {};
    if ((free & ~Waited) == thread) {
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

nxErrorEnum nxMutex::Unlock()
{
    if ((_holder.load(std::memory_order_relaxed) & ~Waited) != GetThread()) return nxError_UnlockFailed;
    if (_depth != 0) {
        --_depth;
        return {};
    }
    if ((_holder.exchange(0, std::memory_order_release) & Waited) != 0) _holder.notify_one();
    return {};
}
