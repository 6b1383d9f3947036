#pragma once

#include <string>

#include "api/nxDataObjectCacheTemplate.h"
#include "base/records/nxGenericProductID.h"

// A cache of objects that belong to products. One subscription serves all products of one type and name.
template <class DataObject, class CacheEntry, class Observer>
class nxProductBasedCache
    : public nxDataObjectCacheTemplate<DataObject, CacheEntry, Observer, nxGenericProductID, 9, 9, DataObject>
{
public:
    std::string GetIndexedMapKey(const nxGenericProductID& productID) override
    {
        return productID.GetAsIndexedMapKey();
    }
    // The code of the type and the name. None for an undefined type, and for a name that is not given.
    bool GetSubscriptionKey(const nxGenericProductID& productID, std::string& subscriptionKey) const override
    {
        subscriptionKey.clear();
        if (productID.GetProductType().IsUndefined()) return false;
        subscriptionKey = productID.GetProductType().GetAsCode();
        if (productID.GetName().empty() || productID.GetName() == "*") return false;
        subscriptionKey += '.';
        subscriptionKey += productID.GetName();
        return true;
    }
};
