#pragma once

#include <memory>
#include <string>
#include <vector>

#include "api/nxProductBasedCache.h"
#include "api/nxProductCacheEntry.h"
#include "api/nxProductDefinitionService.h"
#include "base/records/nxProductDefinition.h"
#include "base/records/nxProductID.h"

extern template class nxDataObjectCacheTemplate<nxProductDefinition, nxProductCacheEntry, nxProductObserver,
                                                nxGenericProductID, 9, 9, nxProductDefinition>;

// The static data of products, one copy for all jobs of the process. A host puts definitions in, or names the
// service that has them. Any thread may call; the locks and what callbacks may do are told in
// nxDataObjectCacheTemplate.
class nxProductCache final
    : public nxProductBasedCache<nxProductDefinition, nxProductCacheEntry, nxProductObserver>
{
public:
    // Lives as long as the process, so that late threads find it. Destroy empties it.
    static nxProductCache& GetInstance();

    // Who brings definitions from now on; null for nobody. Ends the subscriptions of the one before, which is
    // not called any more when this returns; what it brought stays. Not from a callback, nor from a call of
    // the service.
    void SetDefinitionService(nxProductDefinitionService* service);

    // Replaces what is known of the product, as its first snapshot or as an update of it. Keeps a copy under
    // this identity.
    void SetProductDefinition(const nxProductID& productID, const nxProductDefinition& definition);
    // A service's updates, in the form that goes with the locking in use. A definition without a name is for
    // all products of its type and exchange, and changes what it gives; one without any identity is ignored.
    void DeliverUpdates(std::vector<nxProductDefinition*>& definitions);

    // A new copy of the product's definition that the caller owns, or null. With `populate`, the service is
    // asked for what is not here. The identity is taken as it stands: one without an exchange is another than
    // one with it.
    nxProductDefinition* GetProductDefinition(const nxProductID& productID, bool populate, bool flag);
    // Copies of all that the identity selects; what is not given in it stands for any. Asks no service.
    std::vector<std::unique_ptr<nxProductDefinition>> GetProductDefinitions(
        const nxGenericProductID& pattern) const;

    // True for a definition without a name.
    static bool IsForManyProducts(const nxProductDefinition& definition);

    std::string GetIndexedMapKeyForDataObject(const nxProductDefinition& definition) override;
    bool IsWildcardDataObject(const nxProductDefinition& definition) override;
    bool ShouldCacheDataObject(const nxProductDefinition& definition) override;
    nxDataObjectCacheSubscription* CreateSubscription(const nxGenericProductID& productID) override;

private:
    nxProductCache();

    nxProductDefinitionService* _service = nullptr;  // outlives its being set here; guarded by _derivedMutex
};
