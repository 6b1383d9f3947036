#include "api/nxDataObjectCacheTemplate.h"

#include <optional>
#include <utility>

#include "api/nxDataObjectCacheEntryGuard.h"
#include "api/nxProductCacheEntry.h"
#include "base/log/nxLogMessage.h"
#include "base/records/nxGenericProductID.h"
#include "base/threads/nxMutexGuard.h"

namespace {

// Calls each monitor; a callback may take out any of them, itself too.
template <class Monitor, class Call>
void ForEachMonitor(const std::set<Monitor*>& monitors, const Call& call)
{
    for (auto at = monitors.begin(); at != monitors.end();) {
        Monitor* monitor = *at;
        call(*monitor);
        at = monitors.upper_bound(monitor);
    }
}

}  // namespace

// D data object, E entry, O observer, K key, e and w counts of fields, S snapshot.

template <class D, class E, class O, class K, int e, int w, class S>
nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::~nxDataObjectCacheTemplate()
{
    nxDataObjectCacheTemplate::Destroy();
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::Destroy()
{
    const nxMutexGuard subscriptionGuard(_subscriptionMutex);
    _DropSubscriptions();
    const nxMutexGuard cacheGuard(_cacheMutex);
    for (const auto& [key, entry] : _entries.GetMap())
        delete entry;
    _entries.Clear();
    _wildcardEntries.Clear();
    _awaitedEntries.clear();
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_DropSubscriptions()
{
    for (const auto& [key, subscription] : _subscriptions)
        static_cast<void>(subscription->Unsubscribe());
    _subscriptions.clear();
}

template <class D, class E, class O, class K, int e, int w, class S>
E* nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::CreateCacheEntryInstance()
{
    return new E;
}

template <class D, class E, class O, class K, int e, int w, class S>
std::unique_ptr<E> nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_MakeEntry()
{
    std::unique_ptr<E> entry(CreateCacheEntryInstance());
    entry->SetParentCache(this);
    entry->OnInstanceCreated(*this);
    return entry;
}

template <class D, class E, class O, class K, int e, int w, class S>
nxErrorEnum nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::GetCachedDataObjectCopy(const K& key, D*& copy,
                                                                                    bool populate, bool flag)
{
    copy = nullptr;
    const std::string indexedKey = GetIndexedMapKey(key);
    {
        const nxMutexGuard guard(_cacheMutex);
        if (const E* entry = _entries.Find(indexedKey)) {
            copy = entry->GetDataObjectCopy();
            return {};
        }
        if (!populate) return {};
        if (!guard.IsHolder()) return nxError_LockFailed;
    }
    const nxErrorEnum error = _PopulateCache(key, flag, nullptr);
    const nxMutexGuard guard(_cacheMutex);
    if (const E* entry = _entries.Find(indexedKey)) copy = entry->GetDataObjectCopy();
    return error;
}

template <class D, class E, class O, class K, int e, int w, class S>
D* nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::GetCachedDataObjectCopy(const K& key, bool populate,
                                                                           bool flag)
{
    D* copy = nullptr;
    static_cast<void>(GetCachedDataObjectCopy(key, copy, populate, flag));
    return copy;
}

template <class D, class E, class O, class K, int e, int w, class S>
nxErrorEnum nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_PopulateCache(const K& key, bool flag,
                                                                           E* requester)
{
    const nxMutexGuard guard(_subscriptionMutex);
    std::string subscriptionKey;
    if (!GetSubscriptionKey(key, subscriptionKey)) return nxError_GeneralFailure;
    if (_subscriptions.contains(subscriptionKey)) return {};
    std::unique_ptr<nxDataObjectCacheSubscription> subscription(CreateSubscription(key));
    nxErrorEnum error = subscription->Subscribe();
    if (error.IsSuccess()) {
        error = subscription->GetSnapshot(requester, flag);
        if (error.IsSuccess()) {
            _subscriptions[subscriptionKey] = std::move(subscription);
            nxLogMessage(
                nxLogLevel::Detail,
                "Added Subscriptions and requested snapshot in data object cache. Key: ", subscriptionKey);
            return {};
        }
        static_cast<void>(subscription->Unsubscribe());
    }
    subscription.reset();
    nxLogMessage(nxLogLevel::Error, "Failed to add subscription in data object cache. Key: ", subscriptionKey,
                 ", Error: ", error);
    return error;
}

template <class D, class E, class O, class K, int e, int w, class S>
E* nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_GetOrCreateCacheEntryByDataObjectKey(const D& object,
                                                                                         bool create,
                                                                                         bool& created)
{
    created = false;
    const std::string indexedKey = GetIndexedMapKeyForDataObject(object);
    E* entry = _entries.Find(indexedKey);
    if (entry == nullptr) {
        if (!create) return nullptr;
        const auto awaited = _awaitedEntries.extract(indexedKey);
        entry = (awaited.empty() ? _MakeEntry() : std::move(awaited.mapped())).release();
        _entries.Insert(indexedKey, entry);
        created = true;
    }
    const std::string wildcardKey = GetWildcardMapKeyForDataObject(object);
    if (_wildcardEntries.Find(wildcardKey) == nullptr) _wildcardEntries.Insert(wildcardKey, entry);
    return entry;
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::OnDataObjectSnapshot(const nxErrorEnum& error,
                                                                          std::vector<D*>& objects,
                                                                          E* requester)
{
    const nxMutexGuard guard(_cacheMutex);
    EntryList createdEntries;
    if (error.IsSuccess() && !objects.empty()) {
        for (const D* object : objects) {
            if (!ShouldCacheDataObject(*object)) continue;
            bool created = false;
            E* entry = _GetOrCreateCacheEntryByDataObjectKey(*object, true, created);
            if (created) createdEntries.push_back(entry);
            entry->OnDataObjectSnapshot(error, object);
        }
    } else if (requester != nullptr) {
        requester->OnDataObjectSnapshot(error, nullptr);
    }
    if (!createdEntries.empty()) _NotifyMonitorsOfCacheEntryAddition(createdEntries, true);
}

template <class D, class E, class O, class K, int e, int w, class S>
E* nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_RouteUpdate(const D& object, EntryList& createdEntries)
{
    if (IsWildcardDataObject(object)) {
        nxDataObjectUpdateAction action(&object);
        _entries.Apply(GetIndexedMapKeyForDataObject(object), action);
        return nullptr;
    }
    bool created = false;
    E* entry = _GetOrCreateCacheEntryByDataObjectKey(object, true, created);
    if (created) createdEntries.push_back(entry);
    return entry;
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::OnDataObjectUpdate_FineGrained(std::vector<D*>& objects)
{
    EntryList createdEntries;
    for (const D* object : objects) {
        if (!ShouldCacheDataObject(*object)) continue;
        E* entry = nullptr;
        {
            const nxMutexGuard guard(_cacheMutex);
            const std::size_t createdBefore = createdEntries.size();
            entry = _RouteUpdate(*object, createdEntries);
            // Nobody is to see the new entry without its object.
            if (createdEntries.size() > createdBefore) entry->SetDataObject(*object);
        }
        if (entry != nullptr) entry->OnDataObjectUpdate(*object);
    }
    if (!createdEntries.empty()) _NotifyMonitorsOfCacheEntryAddition(createdEntries, false);
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::OnDataObjectUpdate(std::vector<D*>& objects)
{
    const nxMutexGuard guard(_cacheMutex);
    EntryList createdEntries;
    for (const D* object : objects) {
        if (!ShouldCacheDataObject(*object)) continue;
        if (E* entry = _RouteUpdate(*object, createdEntries)) entry->OnDataObjectUpdate(*object);
    }
    if (!createdEntries.empty()) _NotifyMonitorsOfCacheEntryAddition(createdEntries, false);
}

template <class D, class E, class O, class K, int e, int w, class S>
E* nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_GetEntryToAttachTo(const std::string& indexedKey)
{
    if (E* entry = _entries.Find(indexedKey)) return entry;
    std::unique_ptr<E>& awaited = _awaitedEntries[indexedKey];
    if (awaited == nullptr) awaited = _MakeEntry();
    return awaited.get();
}

template <class D, class E, class O, class K, int e, int w, class S>
nxErrorEnum nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::AttachObserver(
    const K& key, O& observer, const nxDataObjectCacheObserverBitMask& options, bool populate, bool flag)
{
    const std::string indexedKey = GetIndexedMapKey(key);
    E* entry = nullptr;
    bool inCallback = false;
    {
        std::optional<nxMutexGuard> guard;
        if (RequiresAttachObserverLocking()) guard.emplace(_cacheMutex);
        inCallback = guard && !guard->IsHolder();
        entry = _GetEntryToAttachTo(indexedKey);
        const nxDataObjectCacheEntryGuard entryGuard(*entry);
        _SetObserverOptionsBitMask(observer, options);
        entry->Attach(observer);
        _OnAttachedObserverKey(key);
        if (entry->HasSnapshot()) {
            if (!options.AreAllBitsSet(nxDataObjectCacheObserverOption::Snapshot)) return {};
            entry->NotifyObserverOfDataObjectSnapshot(&observer, {});
            if (!options.AreAllBitsSet(nxDataObjectCacheObserverOption::Updates)) entry->Detach(observer);
            return {};
        }
        if (!populate) return {};
    }
    const nxErrorEnum error = inCallback ? nxErrorEnum(nxError_LockFailed) : _PopulateCache(key, flag, entry);
    if (!error.IsSuccess()) DetachObserver(observer);
    return error;
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::DetachObserver(O& observer)
{
    nxDataObjectCacheEntry* entry = _GetObservedCacheEntry(observer);
    if (entry == nullptr) return;
    std::optional<nxMutexGuard> guard;
    if (!GetEnableEntryLevelLocking()) guard.emplace(_cacheMutex);
    entry->Detach(observer);
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::AddEntryMonitor(Monitor& monitor)
{
    const nxMutexGuard guard(_monitorMutex);
    _entryMonitors.insert(&monitor);
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::AddUpdateMonitor(Monitor& monitor)
{
    const nxMutexGuard guard(_monitorMutex);
    _updateMonitors.insert(&monitor);
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::RemoveMonitor(Monitor& monitor)
{
    const nxMutexGuard guard(_monitorMutex);
    _entryMonitors.erase(&monitor);
    _updateMonitors.erase(&monitor);
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::NotifyMonitorsOfDataUpdate(
    const nxDataObject& object) const
{
    const nxMutexGuard guard(_monitorMutex);
    ForEachMonitor(_updateMonitors,
                   [&](Monitor& monitor) { monitor.OnCacheUpdate(static_cast<const D&>(object)); });
}

template <class D, class E, class O, class K, int e, int w, class S>
void nxDataObjectCacheTemplate<D, E, O, K, e, w, S>::_NotifyMonitorsOfCacheEntryAddition(
    const EntryList& entries, bool fromSnapshot) const
{
    const nxMutexGuard guard(_monitorMutex);
    ForEachMonitor(_entryMonitors, [&](Monitor& monitor) {
        for (const E* entry : entries)
            monitor.OnCacheEntryAddition(entry, fromSnapshot);
    });
}

template class nxDataObjectCacheTemplate<nxProductDefinition, nxProductCacheEntry, nxProductObserver,
                                         nxGenericProductID, 9, 9, nxProductDefinition>;
