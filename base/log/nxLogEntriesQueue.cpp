#include "base/log/nxLogEntriesQueue.h"

#include <algorithm>

#include "base/threads/nxMutexGuard.h"

void nxLogEntriesQueue::AddDevice(nxLogDevice* device)
{
    const nxMutexGuard guard(_mutex);
    if (device != nullptr && std::ranges::find(_devices, device) == _devices.end())
        _devices.push_back(device);
}

void nxLogEntriesQueue::RemoveDevice(nxLogDevice* device)
{
    const nxMutexGuard guard(_mutex);
    std::erase(_devices, device);
}

void nxLogEntriesQueue::Push(const nxLog& log)
{
    const nxMutexGuard guard(_mutex);
    for (nxLogDevice* const device : _devices)
        device->Write(log);
}

void nxLogEntriesQueue::Flush()
{
    const nxMutexGuard guard(_mutex);
    for (nxLogDevice* const device : _devices)
        device->Flush();
}
