#include "base/threads/nxSpinLock.h"

#include <thread>

nxErrorEnum nxSpinLock::Lock()
{
    // Reads between the attempts keep the cache line shared; the holder may be off the processor, so after a
    // while the waiter gives it up too.
    constexpr int turnsBeforeYield = 64;
    for (int turn = 0; _locked.exchange(true, std::memory_order_acquire);)
        while (_locked.load(std::memory_order_relaxed))
            if (++turn > turnsBeforeYield) std::this_thread::yield();
    return {};
}

nxErrorEnum nxSpinLock::Unlock()
{
    _locked.store(false, std::memory_order_release);
    return {};
}
