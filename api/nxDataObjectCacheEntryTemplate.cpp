#include "api/nxDataObjectCacheEntryTemplate.h"

#include <utility>

#include "api/nxDataObjectCache.h"
#include "api/nxDataObjectCacheEntryGuard.h"
#include "api/nxProductObserver.h"
#include "base/records/nxProductDefinition.h"

// An observer that is still attached would follow a dead pointer.
template <class DataObject, class Observer, class Snapshot>
nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::~nxDataObjectCacheEntryTemplate()
{
    for (nxDataObjectCacheObserver* observer : _observers)
        if (_GetObservedCacheEntry(*observer) == this) _SetObservedCacheEntry(*observer, nullptr);
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::Attach(
    nxDataObjectCacheObserver& observer)
{
    const nxDataObjectCacheEntryGuard guard(*this);
    _observers.insert(&observer);
    _SetObservedCacheEntry(observer, this);
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::Detach(
    nxDataObjectCacheObserver& observer)
{
    const nxDataObjectCacheEntryGuard guard(*this);
    if (_notifying)
        _observersToDetachDeferred.insert(&observer);
    else
        _observers.erase(&observer);
}

template <class DataObject, class Observer, class Snapshot>
DataObject* nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::GetDataObjectCopy() const
{
    const nxDataObjectCacheEntryGuard guard(*this);
    return _dataObject == nullptr ? nullptr : _dataObject->CopyInstance();
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::NotifyObserverOfDataObjectSnapshot(
    Observer* observer, const nxErrorEnum& error)
{
    observer->OnDataObjectSnapshot(error, _dataObject.get());
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::OnDataObjectSnapshot(
    const nxErrorEnum& error, const DataObject* object)
{
    const nxDataObjectCacheEntryGuard guard(*this);
    if (error.IsSuccess()) _hasSnapshot = true;
    if (object != nullptr) SetDataObject(*object);
    _WalkObservers([&](Observer& observer) {
        const nxDataObjectCacheObserverBitMask options = observer.GetObserverOptions();
        if (options.AreAllBitsSet(nxDataObjectCacheObserverOption::Snapshot)) {
            NotifyObserverOfDataObjectSnapshot(&observer, error);
            if (!options.AreAllBitsSet(nxDataObjectCacheObserverOption::Updates)) Detach(observer);
        }
        if (!error.IsSuccess()) Detach(observer);
    });
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::NotifyObserversOfDataObjectUpdate(
    const DataObject& object)
{
    const nxDataObjectCacheEntryGuard guard(*this);
    _WalkObservers([&](Observer& observer) {
        if (observer.GetObserverOptions().AreAllBitsSet(nxDataObjectCacheObserverOption::Updates) &&
            observer.ShouldProcessUpdate(object))
            observer.OnDataObjectUpdate(object);
    });
    if (_parentCache != nullptr) _parentCache->NotifyMonitorsOfDataUpdate(object);
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::SetDataObject(const DataObject& object)
{
    const nxDataObjectCacheEntryGuard guard(*this);
    _dataObject.reset(object.CopyInstance());
}

template <class DataObject, class Observer, class Snapshot>
bool nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::HasSnapshot() const
{
    const nxDataObjectCacheEntryGuard guard(*this);
    return _hasSnapshot;
}

template <class DataObject, class Observer, class Snapshot>
template <class Visitor>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::_WalkObservers(const Visitor& visit)
{
    // An observer that throws ends the walk, as its end would.
    struct Walk
    {
        nxDataObjectCacheEntryTemplate& entry;
        const bool isInner = std::exchange(entry._notifying, true);
        ~Walk()
        {
            entry._notifying = isInner;
            if (!isInner) entry._FlushObserversToDetachDeferred();
        }
    } walk{*this};
    for (nxDataObjectCacheObserver* observer : _observers)
        visit(static_cast<Observer&>(*observer));
}

template <class DataObject, class Observer, class Snapshot>
void nxDataObjectCacheEntryTemplate<DataObject, Observer, Snapshot>::_FlushObserversToDetachDeferred()
{
    for (nxDataObjectCacheObserver* observer : _observersToDetachDeferred)
        Detach(*observer);
    _observersToDetachDeferred.clear();
}

template class nxDataObjectCacheEntryTemplate<nxProductDefinition, nxProductObserver, nxProductDefinition>;
