#pragma once

#include "api/nxDataObjectCacheEntry.h"
#include "api/nxDataObjectCacheEntryGuard.h"
#include "api/nxDataObjectCacheObserver.h"
#include "base/enums/nxErrorEnum.h"

// An observer of entries that hold a DataObject. The callbacks come on the thread that brings the data, under
// the locks of cache and entry: see nxDataObjectCacheTemplate for what they may do.
template <class DataObject, class Snapshot>
class nxDataObjectCacheObserverTemplate : public nxDataObjectCacheObserver
{
public:
    const DataObject* GetCachedDataObject() const override
    {
        const nxDataObjectCacheEntry* entry = GetObservedCacheEntry();
        return entry == nullptr ? nullptr : static_cast<const DataObject*>(entry->GetDataObject());
    }
    DataObject* GetCachedDataObjectCopy() const override
    {
        const nxDataObjectCacheEntry* entry = GetObservedCacheEntry();
        if (entry == nullptr) return nullptr;
        const nxDataObjectCacheEntryGuard guard(*entry);
        const nxDataObject* object = entry->GetDataObject();
        return object == nullptr ? nullptr : static_cast<DataObject*>(object->CopyInstance());
    }

    // The snapshot that was asked for, or why there is none; null with a success, too, when it was empty.
    virtual void OnDataObjectSnapshot(const nxErrorEnum& error, const DataObject* object) = 0;
    virtual void OnDataObjectUpdate(const DataObject& object) = 0;
    // False keeps an update from OnDataObjectUpdate.
    virtual bool ShouldProcessUpdate(const DataObject&) { return true; }
};
