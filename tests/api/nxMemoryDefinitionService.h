#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "api/nxProductCache.h"

// Serves the process's product cache from memory: a snapshot within the call, updates when they are pushed,
// which any thread may do. It is in service from construction to destruction, and leaves the cache empty.
class nxMemoryDefinitionService : public nxProductDefinitionService
{
public:
    nxMemoryDefinitionService() { nxProductCache::GetInstance().SetDefinitionService(this); }
    ~nxMemoryDefinitionService() override
    {
        nxProductCache::GetInstance().SetDefinitionService(nullptr);
        nxProductCache::GetInstance().Destroy();
    }

    // To be called before there are threads.
    void Add(const nxProductDefinition& definition)
    {
        _definitions[definition.GetGenericProductID().GetAsIndexedMapKey()].reset(definition.CopyInstance());
    }
    static void Push(const nxProductDefinition& definition)
    {
        const std::unique_ptr<nxProductDefinition> copy(definition.CopyInstance());
        std::vector<nxProductDefinition*> definitions = {copy.get()};
        nxProductCache::GetInstance().DeliverUpdates(definitions);
    }

    // "+" for Subscribe, "-" for Unsubscribe, "?" for GetSnapshot, each with the product; the cache calls one
    // at a time.
    std::string calls;

    nxErrorEnum Subscribe(const nxGenericProductID& productID) override { return _Record('+', productID); }
    nxErrorEnum Unsubscribe(const nxGenericProductID& productID) override { return _Record('-', productID); }
    nxErrorEnum GetSnapshot(const nxGenericProductID& productID, nxProductCacheEntry* requester,
                            bool) override
    {
        std::vector<nxProductDefinition*> found;
        const auto definition = _definitions.find(productID.GetAsIndexedMapKey());
        if (definition != _definitions.end()) found.push_back(definition->second.get());
        nxProductCache::GetInstance().OnDataObjectSnapshot({}, found, requester);
        return _Record('?', productID);
    }

private:
    nxErrorEnum _Record(char call, const nxGenericProductID& productID)
    {
        calls += call + productID.GetAsString() + ' ';
        return {};
    }

    std::map<std::string, std::unique_ptr<nxProductDefinition>> _definitions;
};
