#pragma once

#include "base/records/nxDataObject.h"

class nxDataObjectCache;
class nxDataObjectCacheObserver;

// The part of a cache's entry that knows no type of object. The cache owns its entries, from the first of an
// entry's data to the cache's Destroy.
class nxDataObjectCacheEntry
{
public:
    virtual ~nxDataObjectCacheEntry() = default;
    nxDataObjectCacheEntry(const nxDataObjectCacheEntry&) = delete;
    nxDataObjectCacheEntry& operator=(const nxDataObjectCacheEntry&) = delete;

    virtual const nxDataObject* GetDataObject() const = 0;
    virtual nxDataObject* GetDataObject() = 0;
    virtual void Attach(nxDataObjectCacheObserver& observer) = 0;
    virtual void Detach(nxDataObjectCacheObserver& observer) = 0;
    // Called when a cache has made the entry.
    virtual void OnInstanceCreated(const nxDataObjectCache&) {}
    // For an entry with a lock of its own, which its own thread may take again.
    virtual void LockEntry() const {}
    virtual void UnlockEntry() const {}

protected:
    virtual nxDataObjectCacheEntry* _GetObservedCacheEntry(nxDataObjectCacheObserver& observer);

public:
    void SetParentCache(nxDataObjectCache* cache) { _parentCache = cache; }

protected:
    nxDataObjectCacheEntry() = default;

    void _SetObservedCacheEntry(nxDataObjectCacheObserver& observer, nxDataObjectCacheEntry* entry);

    nxDataObjectCache* _parentCache = nullptr;  // outlives the entry
};
