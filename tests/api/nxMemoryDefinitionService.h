#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "api/nxProductCache.h"

// Serves the process's product cache from memory: a snapshot within the call, updates when any thread pushes
// them. In service from construction to destruction, when it leaves the cache empty.
class nxMemoryDefinitionService : public nxProductDefinitionService
{
public:
    nxMemoryDefinitionService() { nxProductCache::GetInstance().SetDefinitionService(this); }
    ~nxMemoryDefinitionService() override
    {
        nxProductCache::GetInstance().SetDefinitionService(nullptr);
        nxProductCache::GetInstance().Destroy();
    }

    // "+name " for Subscribe, "-name " for Unsubscribe, "?name " for GetSnapshot, "!" before the blank for
    // its flag.
    std::string told;
    nxErrorEnum subscribeError;
    nxErrorEnum snapshotError;
    bool isSilent = false;  // no snapshot comes
    nxProductCacheEntry* requester = nullptr;

    // To be called before there are threads.
    void Add(const nxProductDefinition& definition)
    {
        _records[definition.GetGenericProductID().GetAsIndexedMapKey()].definition = definition;
    }
    // The record's lock keeps a snapshot from overtaking a newer update.
    void Push(nxProductDefinition definition)
    {
        Record& record = _records[definition.GetGenericProductID().GetAsIndexedMapKey()];
        const std::lock_guard lock(record.mutex);
        record.definition = definition;
        std::vector<nxProductDefinition*> definitions = {&definition};
        nxProductCache::GetInstance().DeliverUpdates(definitions);
    }

    nxErrorEnum Subscribe(const nxGenericProductID& productID) override
    {
        told += "+" + productID.GetName() + " ";
        return subscribeError;
    }
    nxErrorEnum Unsubscribe(const nxGenericProductID& productID) override
    {
        told += "-" + productID.GetName() + " ";
        return {};
    }
    nxErrorEnum GetSnapshot(const nxGenericProductID& productID, nxProductCacheEntry* entry,
                            bool flag) override
    {
        told += "?" + productID.GetName() + (flag ? "! " : " ");
        requester = entry;
        const auto record = _records.find(productID.GetAsIndexedMapKey());
        if (record == _records.end() || isSilent) return snapshotError;
        const std::lock_guard lock(record->second.mutex);
        std::vector<nxProductDefinition*> found = {&record->second.definition};
        nxProductCache::GetInstance().OnDataObjectSnapshot({}, found, entry);
        return snapshotError;
    }

private:
    struct Record
    {
        std::mutex mutex;
        nxProductDefinition definition;
    };
    std::map<std::string, Record> _records;
};
