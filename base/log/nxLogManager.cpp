#include "base/log/nxLogManager.h"

#include "base/log/nxLogEntriesQueue.h"

nxLogEntriesQueue& nxLogManager::GetLogEntriesQueue()
{
    static auto* const queue = new nxLogEntriesQueue;
    return *queue;
}
