#pragma once

#include <map>
#include <memory>
#include <mutex>
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
        _records[_GetKey(definition)].definition.reset(definition.CopyInstance());
    }
    // A record's lock keeps a snapshot from overtaking a newer update.
    void Push(const nxProductDefinition& definition)
    {
        std::unique_lock<std::mutex> lock;
        if (const auto record = _records.find(_GetKey(definition)); record != _records.end()) {
            lock = std::unique_lock(record->second.mutex);
            record->second.definition.reset(definition.CopyInstance());
        }
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
        std::unique_lock<std::mutex> lock;
        if (const auto record = _records.find(productID.GetAsIndexedMapKey()); record != _records.end()) {
            lock = std::unique_lock(record->second.mutex);
            found.push_back(record->second.definition.get());
        }
        nxProductCache::GetInstance().OnDataObjectSnapshot({}, found, requester);
        return _Record('?', productID);
    }

private:
    nxErrorEnum _Record(char call, const nxGenericProductID& productID)
    {
        calls += call + productID.GetAsString() + ' ';
        return {};
    }

    struct Record
    {
        std::mutex mutex;  // comes before the cache's locks but the subscription's
        std::unique_ptr<nxProductDefinition> definition;
    };

    static std::string _GetKey(const nxProductDefinition& definition)
    {
        return definition.GetGenericProductID().GetAsIndexedMapKey();
    }

    std::map<std::string, Record> _records;
};
