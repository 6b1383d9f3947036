#pragma once

#include <vector>

#include "base/log/nxLogDevice.h"
#include "base/threads/nxMutex.h"

// Hands each line to every installed device, in the order in which they were added. The devices are not
// owned and must be removed before they die. All operations may be called from any thread.
class nxLogEntriesQueue
{
public:
    // A device that is already there, or null, is not added.
    void AddDevice(nxLogDevice* device);
    // When it returns, no call of the device is under way.
    void RemoveDevice(nxLogDevice* device);
    void Push(const nxLog& log);
    void Flush();

private:
    nxMutex _mutex;
    std::vector<nxLogDevice*> _devices;  // guarded by _mutex
};
