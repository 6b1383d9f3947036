#pragma once

#include <memory>
#include <set>

#include "api/nxDataObjectCacheEntry.h"
#include "base/enums/nxErrorEnum.h"

// An entry: a copy of one data object, and those who watch it. Each operation holds the entry's own lock, if
// the concrete entry has one; without one, the cache's lock guards it.
//
// Walks go over the observers in the order of their addresses. A Detach during a walk, by a callback, takes
// effect at the end of the walk, and stands even when the observer is attached again in the same walk; an
// Attach takes effect at once. So an observer lives on until the walk has ended.
template <class DataObject, class Observer, class Snapshot>
class nxDataObjectCacheEntryTemplate : public nxDataObjectCacheEntry
{
public:
    ~nxDataObjectCacheEntryTemplate() override;

    const DataObject* GetDataObject() const override { return _dataObject.get(); }
    DataObject* GetDataObject() override { return _dataObject.get(); }
    void Attach(nxDataObjectCacheObserver& observer) override;
    void Detach(nxDataObjectCacheObserver& observer) override;

    // A copy that the caller owns; null when there is no object yet.
    virtual DataObject* GetDataObjectCopy() const;
    virtual void NotifyObserverOfDataObjectSnapshot(Observer* observer, const nxErrorEnum& error);
    // Keeps the object, if there is one, tells all who want snapshots, and lets go of those who want nothing
    // more; of all after an error.
    virtual void OnDataObjectSnapshot(const nxErrorEnum& error, const DataObject* object);
    // Tells all who want updates, then the cache's monitors.
    virtual void NotifyObserversOfDataObjectUpdate(const DataObject& object);
    // Keeps a copy.
    virtual void SetDataObject(const DataObject& object);
    // For the concrete entry: an update has come.
    virtual void OnDataObjectUpdate(const DataObject& object) = 0;

    // True once a snapshot has come without an error.
    bool HasSnapshot() const;

private:
    // Calls visit(observer) for each observer. A walk inside a walk leaves the detaching to the outer one.
    template <class Visitor>
    void _WalkObservers(const Visitor& visit);
    void _FlushObserversToDetachDeferred();

    bool _hasSnapshot = false;
    bool _notifying = false;
    std::set<nxDataObjectCacheObserver*> _observers;
    std::set<nxDataObjectCacheObserver*> _observersToDetachDeferred;
    std::unique_ptr<DataObject> _dataObject;
};
