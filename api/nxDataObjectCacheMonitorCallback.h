#pragma once

// One who watches a whole cache. Called on the thread that brings the data, under the cache's monitor lock:
// it may add and remove monitors, but must not call the cache otherwise, nor wait for one who does. The
// consumer owns it and removes it before it dies.
template <class CacheEntry, class DataObject>
class nxDataObjectCacheMonitorCallback
{
public:
    virtual ~nxDataObjectCacheMonitorCallback() = default;

    // There is a new entry. It has its data and has told its observers.
    virtual void OnCacheEntryAddition(const CacheEntry* entry, bool fromSnapshot) = 0;
    // An entry's observers have been told of an update.
    virtual void OnCacheUpdate(const DataObject&) {}
};
