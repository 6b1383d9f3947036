#pragma once

#include <atomic>

#include "base/enums/nxErrorEnum.h"

// A lock for sections of a few instructions: a waiter turns in place, yielding after a while. Not recursive;
// a thread that locks it twice hangs.
class nxSpinLock
{
public:
    nxSpinLock() = default;
    nxSpinLock(const nxSpinLock&) = delete;
    nxSpinLock& operator=(const nxSpinLock&) = delete;

    // Both always succeed.
    nxErrorEnum Lock();
    nxErrorEnum Unlock();

private:
    std::atomic<bool> _locked{false};
};
