#pragma once

#include "api/nxDataObjectCacheEntryTemplate.h"
#include "api/nxProductObserver.h"
#include "base/records/nxProductDefinition.h"
#include "base/threads/nxMutex.h"

extern template class nxDataObjectCacheEntryTemplate<nxProductDefinition, nxProductObserver,
                                                     nxProductDefinition>;

// The definition of one product, under a lock of its own.
class nxProductCacheEntry
    : public nxDataObjectCacheEntryTemplate<nxProductDefinition, nxProductObserver, nxProductDefinition>
{
public:
    void LockEntry() const override;
    void UnlockEntry() const override;

    // Keeps the definition and tells of it. One without a name is for many products: it changes what it gives
    // (tick size, lot size, point value, price manipulator, description, exchange) and leaves the rest as it
    // is.
    void OnDataObjectUpdate(const nxProductDefinition& definition) override;

private:
    mutable nxMutex _entryMutex{true};  // recursive: callbacks come back
};
