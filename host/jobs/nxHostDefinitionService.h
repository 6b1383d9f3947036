#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "api/nxProductDefinitionService.h"
#include "base/threads/nxMutex.h"
#include "host/market/nxProductDescription.h"

// Serves the process's nxProductCache with a run's described products: a snapshot at the first question for
// one, an update to all that were asked for when the descriptions change. A product is known by its name,
// whatever type it is asked for under; scripts of the host ask for strategies, as such.
//
// Owned by the server. In service from the first descriptions until it dies, and leaves the cache empty then,
// so of two runs side by side in one process only one should describe products. Calls may come on any thread.
class nxHostDefinitionService : public nxProductDefinitionService
{
public:
    // What a run's product is found under.
    static nxGenericProductID GetIdentity(const std::string& name, bool isStrategy);

    nxHostDefinitionService() = default;
    nxHostDefinitionService(const nxHostDefinitionService&) = delete;
    nxHostDefinitionService& operator=(const nxHostDefinitionService&) = delete;
    ~nxHostDefinitionService() override;

    // What is described from now on; without products nothing is served.
    void SetProducts(nxProductDescriptions products);

    nxErrorEnum Subscribe(const nxGenericProductID& productID) override;
    nxErrorEnum Unsubscribe(const nxGenericProductID& productID) override;
    nxErrorEnum GetSnapshot(const nxGenericProductID& productID, nxProductCacheEntry* requester,
                            bool flag) override;

private:
    // The mutex guards what is below, and is not held while the cache is called.
    nxMutex _mutex;
    nxProductDescriptions _products;                                            // null before there were any
    std::unordered_map<std::string_view, const nxProductDescription*> _byName;  // into the products
    std::map<std::string, nxGenericProductID> _subscribed;                      // by their keys
    bool _isInService = false;  // on the server's thread alone
};
