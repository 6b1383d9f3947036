#pragma once

#include "base/threads/nxMutex.h"

// A bool that several threads may read and write at a time.
class nxSharedFlag
{
public:
    explicit nxSharedFlag(bool flag = false) : _flag(flag) {}

    bool GetFlag() const;
    void SetFlag(bool flag);

private:
    mutable nxMutex _mutex;
    bool _flag;  // guarded by _mutex
};
