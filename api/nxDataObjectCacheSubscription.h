#pragma once

#include "base/enums/nxErrorEnum.h"

class nxDataObjectCacheEntry;

// A cache's hold on its data service for one subscription key. The cache owns it and calls it one call at a
// time, under its subscription lock.
class nxDataObjectCacheSubscription
{
public:
    virtual ~nxDataObjectCacheSubscription() = default;

    [[nodiscard]] virtual nxErrorEnum Subscribe() = 0;
    [[nodiscard]] virtual nxErrorEnum Unsubscribe() = 0;
    // Asks for a snapshot, which may come within the call or later, and on any thread. `requester` goes back
    // to the cache with it; `flag` is the consumer's, as it gave it.
    [[nodiscard]] virtual nxErrorEnum GetSnapshot(nxDataObjectCacheEntry* requester, bool flag) = 0;
};
