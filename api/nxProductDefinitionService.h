#pragma once

#include "base/enums/nxErrorEnum.h"
#include "base/records/nxGenericProductID.h"

class nxProductCacheEntry;

// Where product definitions come from: a host implements it and hands it to
// nxProductCache::SetDefinitionService, which never owns it. The calls come on the threads of consumers, one
// at a time.
//
// What it has, it brings to nxProductCache::GetInstance(), within a call or from threads of its own:
// OnDataObjectSnapshot for what was asked for, DeliverUpdates for what changes. A definition bears, as its
// generic product id, the identity that it is to be found under: that of the subscription, for one.
class nxProductDefinitionService
{
public:
    virtual ~nxProductDefinitionService() = default;

    // Once for each product type and name, until Unsubscribe. Not called for an identity without a type or a
    // name.
    [[nodiscard]] virtual nxErrorEnum Subscribe(const nxGenericProductID& productID) = 0;
    // Nothing more is to be brought for it when this returns.
    [[nodiscard]] virtual nxErrorEnum Unsubscribe(const nxGenericProductID& productID) = 0;
    // Follows a Subscribe that has succeeded; when it fails, Unsubscribe follows, and the next request begins
    // anew. A snapshot is answered with the requester, also when it fails later or is empty; null is nobody.
    // `flag` is the consumer's.
    [[nodiscard]] virtual nxErrorEnum GetSnapshot(const nxGenericProductID& productID,
                                                  nxProductCacheEntry* requester, bool flag) = 0;
};
