#include "api/nxDataObjectCache.h"

#include "api/nxDataObjectCacheObserver.h"
#include "base/log/nxLogMessage.h"

nxDataObjectCacheEntry* nxDataObjectCache::_GetObservedCacheEntry(nxDataObjectCacheObserver& observer)
{
    return observer._observedCacheEntry;
}

void nxDataObjectCache::SetEnableEntryLevelLocking(bool enable)
{
    nxLogMessage(nxLogLevel::Info, "EnableEntryLevelLocking: ", enable);
    _enableEntryLevelLocking = enable;
}

void nxDataObjectCache::_SetObserverOptionsBitMask(nxDataObjectCacheObserver& observer,
                                                   const nxDataObjectCacheObserverBitMask& options)
{
    observer._observerOptions = options;
}
