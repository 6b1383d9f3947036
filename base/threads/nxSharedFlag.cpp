#include "base/threads/nxSharedFlag.h"

#include "base/threads/nxMutexGuard.h"

bool nxSharedFlag::GetFlag() const
{
    const nxMutexGuard guard(_mutex);
    return _flag;
}

void nxSharedFlag::SetFlag(bool flag)
{
    const nxMutexGuard guard(_mutex);
    _flag = flag;
}
