#pragma once

#include <map>
#include <memory>
#include <string>

#include "base/records/nxProductDefinition.h"
#include "base/records/nxProductID.h"
#include "base/threads/nxMutex.h"

// The static data of products, one copy for all jobs of the process. The host puts definitions in; any thread
// may put and ask.
class nxProductCache
{
public:
    static nxProductCache& GetInstance();

    // Replaces what is known of the product. Keeps a copy.
    void SetProductDefinition(const nxProductID& productID, const nxProductDefinition& definition);
    // A new copy of the product's definition that the caller owns, or null. populate and flag say how a
    // definition that is not here would be fetched; there is no service to fetch one from yet.
    nxProductDefinition* GetProductDefinition(const nxProductID& productID, bool populate, unsigned int flag);
    void Clear();

private:
    nxProductCache() = default;

    nxMutex _mutex;
    std::map<std::string, std::unique_ptr<nxProductDefinition>> _definitions;  // guarded by _mutex
};
