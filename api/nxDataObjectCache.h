#pragma once

#include "base/enums/nxBitMasks.h"
#include "base/records/nxDataObject.h"

class nxDataObjectCacheEntry;
class nxDataObjectCacheObserver;

// The part of a cache of data objects that knows no type of object.
class nxDataObjectCache
{
public:
    virtual ~nxDataObjectCache() = default;
    nxDataObjectCache(const nxDataObjectCache&) = delete;
    nxDataObjectCache& operator=(const nxDataObjectCache&) = delete;

    virtual void NotifyMonitorsOfDataUpdate(const nxDataObject& object) const = 0;

protected:
    virtual nxDataObjectCacheEntry* _GetObservedCacheEntry(nxDataObjectCacheObserver& observer);

public:
    // Off at first. Set it before the cache is used: it decides which locks the cache goes by.
    bool GetEnableEntryLevelLocking() const { return _enableEntryLevelLocking; }
    void SetEnableEntryLevelLocking(bool enable);

protected:
    nxDataObjectCache() = default;

    // An observer keeps its options private; a cache sets them.
    void _SetObserverOptionsBitMask(nxDataObjectCacheObserver& observer,
                                    const nxDataObjectCacheObserverBitMask& options);

private:
    bool _enableEntryLevelLocking = false;
};
