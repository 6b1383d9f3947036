#include "api/nxDataObjectCacheEntry.h"

#include "api/nxDataObjectCacheObserver.h"

nxDataObjectCacheEntry* nxDataObjectCacheEntry::_GetObservedCacheEntry(nxDataObjectCacheObserver& observer)
{
    return observer._observedCacheEntry;
}

void nxDataObjectCacheEntry::_SetObservedCacheEntry(nxDataObjectCacheObserver& observer,
                                                    nxDataObjectCacheEntry* entry)
{
    observer._observedCacheEntry = entry;
}
