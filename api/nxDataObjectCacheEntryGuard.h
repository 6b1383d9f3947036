#pragma once

#include "api/nxDataObjectCacheEntry.h"

// Holds an entry's own lock, if it has one.
class nxDataObjectCacheEntryGuard
{
public:
    explicit nxDataObjectCacheEntryGuard(const nxDataObjectCacheEntry& entry) : _entry(entry)
    {
        _entry.LockEntry();
    }
    ~nxDataObjectCacheEntryGuard() { _entry.UnlockEntry(); }
    nxDataObjectCacheEntryGuard(const nxDataObjectCacheEntryGuard&) = delete;
    nxDataObjectCacheEntryGuard& operator=(const nxDataObjectCacheEntryGuard&) = delete;

private:
    const nxDataObjectCacheEntry& _entry;
};
