#pragma once

#include "base/enums/nxBitMasks.h"
#include "base/records/nxDataObject.h"

class nxDataObjectCacheEntry;

// One who watches one entry of a cache, by the options of nxDataObjectCacheObserverOption: one that wants the
// snapshot and no updates is detached after the snapshot. The consumer owns it and detaches it before it
// dies.
class nxDataObjectCacheObserver
{
public:
    virtual ~nxDataObjectCacheObserver() = default;
    nxDataObjectCacheObserver(const nxDataObjectCacheObserver&) = delete;
    nxDataObjectCacheObserver& operator=(const nxDataObjectCacheObserver&) = delete;

    // The entry's object itself, null without an entry or an object. To be used in a callback only: an update
    // replaces it.
    virtual const nxDataObject* GetCachedDataObject() const = 0;
    // A copy of it that the caller owns. For use at any time.
    virtual nxDataObject* GetCachedDataObjectCopy() const = 0;
    // The entry that it was attached to last; it stays when the observer is detached.
    virtual nxDataObjectCacheEntry* GetObservedCacheEntry() { return _observedCacheEntry; }
    virtual const nxDataObjectCacheEntry* GetObservedCacheEntry() const { return _observedCacheEntry; }

    const nxDataObjectCacheObserverBitMask& GetObserverOptions() const { return _observerOptions; }

protected:
    nxDataObjectCacheObserver() = default;

private:
    friend class nxDataObjectCache;
    friend class nxDataObjectCacheEntry;

    nxDataObjectCacheEntry* _observedCacheEntry = nullptr;
    nxDataObjectCacheObserverBitMask _observerOptions;
};
