#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "api/nxDataObjectCache.h"
#include "api/nxDataObjectCacheMonitorCallback.h"
#include "api/nxDataObjectCacheSubscription.h"
#include "api/nxIndexedMap.h"
#include "base/enums/nxErrorEnum.h"
#include "base/threads/nxMutex.h"

// A cache of data objects that a service brings as snapshots and updates: one entry for each object, one
// subscription for each group of objects, observers of entries, monitors of the whole. The integers are the
// counts of fields of the keys of its two maps.
//
// Any thread may call. The order of the locks is: subscription, cache, an entry's own, monitor. The cache
// lock is never held while the service is called, and the service may deliver from within a call or from
// threads of its own.
//
// Callbacks of observers run under the cache lock, and what they call back gets through: copies, Attach,
// Detach, updates. Nothing is populated in them, since the service would be called under that lock: that
// fails with nxError_LockFailed. With entry level locking, updates run under the lock of the one entry; a
// callback may then use its own observer and detach observers of the same entry, and must not call the cache
// for anything else.
template <class DataObject, class CacheEntry, class Observer, class Key, int entryFieldCount,
          int wildcardFieldCount, class Snapshot>
class nxDataObjectCacheTemplate : public nxDataObjectCache
{
public:
    using Monitor = nxDataObjectCacheMonitorCallback<CacheEntry, DataObject>;

    // Brings an update to each entry that a walk selects.
    class nxDataObjectUpdateAction : public nxIndexedMapAction<CacheEntry>
    {
    public:
        explicit nxDataObjectUpdateAction(const DataObject* object) : _object(object) {}
        void operator()(CacheEntry* entry) override { entry->OnDataObjectUpdate(*_object); }

    private:
        const DataObject* _object;
    };

    ~nxDataObjectCacheTemplate() override;
    void NotifyMonitorsOfDataUpdate(const nxDataObject& object) const override;
    // Ends all subscriptions and deletes all entries. Not from a callback; no observer may be in use
    // meanwhile, and one that was detached before must not ask for its object any more.
    virtual void Destroy();

    // Keys of the maps. They must be canonical, or an entry would not be found again.
    virtual std::string GetIndexedMapKey(const Key& key) = 0;
    virtual std::string GetWildcardMapKey(const Key& key) { return GetIndexedMapKey(key); }
    virtual std::string GetIndexedMapKeyForDataObject(const DataObject& object) = 0;
    virtual std::string GetWildcardMapKeyForDataObject(const DataObject& object)
    {
        return GetIndexedMapKeyForDataObject(object);
    }
    // False when the key cannot be subscribed to.
    virtual bool GetSubscriptionKey(const Key& key, std::string& subscriptionKey) const = 0;
    // True when an update is for every entry whose key it matches.
    virtual bool IsWildcardDataObject(const DataObject& object) = 0;
    // False makes the cache ignore the object.
    virtual bool ShouldCacheDataObject(const DataObject& object) = 0;
    virtual bool RequiresAttachObserverLocking() const { return true; }

    // A copy that the caller owns, null when there is none. With `populate`, what is not here is subscribed
    // to, once for each subscription key; the answer is then what has come within the call. The error is that
    // of populating; `flag` goes to the subscription as it is.
    [[nodiscard]] virtual nxErrorEnum GetCachedDataObjectCopy(const Key& key, DataObject*& copy,
                                                              bool populate, bool flag);
    virtual DataObject* GetCachedDataObjectCopy(const Key& key, bool populate, bool flag);

    // For the service; the objects stay its own. A requester hears of a snapshot that failed or is empty; of
    // one that is there, by its own object.
    virtual void OnDataObjectSnapshot(const nxErrorEnum& error, std::vector<DataObject*>& objects,
                                      CacheEntry* requester);
    // Holds the cache lock for each object in turn, and not while a plain object's observers are told. Only
    // with entry level locking.
    virtual void OnDataObjectUpdate_FineGrained(std::vector<DataObject*>& objects);
    // Holds the cache lock from the first object to the last.
    virtual void OnDataObjectUpdate(std::vector<DataObject*>& objects);
    virtual CacheEntry* CreateCacheEntryInstance();
    virtual nxDataObjectCacheSubscription* CreateSubscription(const Key& key) = 0;

    // Lets the observer watch the key's entry; one that comes after the snapshot gets it now. Where no data
    // has come yet, it waits for them. With `populate`, a snapshot that is not here is asked for; when that
    // fails, the observer is detached again. An observer watches one entry at a time.
    [[nodiscard]] nxErrorEnum AttachObserver(const Key& key, Observer& observer,
                                             const nxDataObjectCacheObserverBitMask& options, bool populate,
                                             bool flag);
    // Once this has returned, and outside a callback, the observer is called no more. From a callback it may
    // be called until the walk that brought the callback has ended.
    void DetachObserver(Observer& observer);

    // Monitors are told from now on. None is called any more once RemoveMonitor has returned.
    void AddEntryMonitor(Monitor& monitor);
    void AddUpdateMonitor(Monitor& monitor);
    void RemoveMonitor(Monitor& monitor);

protected:
    using EntryMap = nxIndexedMap<CacheEntry, '.'>;

    nxDataObjectCacheTemplate() = default;

    // Called under the cache lock when an observer has been attached by the key.
    virtual void _OnAttachedObserverKey(const Key&) {}

    nxErrorEnum _PopulateCache(const Key& key, bool flag, CacheEntry* requester);
    // Null when there is no entry and `create` is false. The caller holds the cache lock.
    CacheEntry* _GetOrCreateCacheEntryByDataObjectKey(const DataObject& object, bool create, bool& created);
    // Unsubscribes from all. The caller holds the subscription lock.
    void _DropSubscriptions();

    mutable nxMutex _cacheMutex;
    EntryMap _entries{entryFieldCount};             // owns the entries; guarded by _cacheMutex
    EntryMap _wildcardEntries{wildcardFieldCount};  // the same entries; guarded by _cacheMutex
    nxMutex _subscriptionMutex;
    // Guarded by _subscriptionMutex.
    std::map<std::string, std::unique_ptr<nxDataObjectCacheSubscription>> _subscriptions;
    mutable nxMutex _monitorMutex;
    std::set<Monitor*> _entryMonitors;   // told of new entries; guarded by _monitorMutex
    std::set<Monitor*> _updateMonitors;  // told of updates; guarded by _monitorMutex
    // For what a derived cache adds; nothing here takes it. The last of the locks.
    mutable nxMutex _derivedMutex;

private:
    using EntryList = std::vector<const CacheEntry*>;

    // Brings a wildcard object to the entries it is for, and gives null; else gives the object's entry.
    CacheEntry* _RouteUpdate(const DataObject& object, EntryList& createdEntries);
    CacheEntry* _GetEntryToAttachTo(const std::string& indexedKey);
    std::unique_ptr<CacheEntry> _MakeEntry();
    void _NotifyMonitorsOfCacheEntryAddition(const EntryList& entries, bool fromSnapshot) const;

    // Entries whose observers were there before any data, by their indexed keys: no entries to anyone else,
    // so that they keep no request from populating. The first data moves one to _entries. Guarded by
    // _cacheMutex.
    std::map<std::string, std::unique_ptr<CacheEntry>> _awaitedEntries;
};
