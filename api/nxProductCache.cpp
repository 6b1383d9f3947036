#include "api/nxProductCache.h"

#include "api/nxIndexedMapHashIndex.h"
#include "api/nxIndexedMapPrefixIndex.h"
#include "base/threads/nxMutexGuard.h"

namespace {

// The fields of a product's key.
constexpr unsigned int TypeField = 0;
constexpr unsigned int ExchangeField = 2;

bool IsGiven(const std::string& field)
{
    return !field.empty() && field != "*";
}

class nxProductSubscription : public nxDataObjectCacheSubscription
{
public:
    nxProductSubscription(nxProductDefinitionService* service, const nxGenericProductID& productID)
        : _service(service), _productID(productID)
    {
    }

    nxErrorEnum Subscribe() override
    {
        return _service == nullptr ? nxErrorEnum(nxError_GeneralFailure) : _service->Subscribe(_productID);
    }
    nxErrorEnum Unsubscribe() override { return _service->Unsubscribe(_productID); }
    nxErrorEnum GetSnapshot(nxDataObjectCacheEntry* requester, bool flag) override
    {
        return _service->GetSnapshot(_productID, static_cast<nxProductCacheEntry*>(requester), flag);
    }

private:
    nxProductDefinitionService* const _service;  // null: there was none
    const nxGenericProductID _productID;
};

class CopyAction : public nxIndexedMapAction<nxProductCacheEntry>
{
public:
    void operator()(nxProductCacheEntry* entry) override
    {
        if (nxProductDefinition* copy = entry->GetDataObjectCopy()) copies.emplace_back(copy);
    }

    std::vector<std::unique_ptr<nxProductDefinition>> copies;
};

}  // namespace

nxProductCache& nxProductCache::GetInstance()
{
    static nxProductCache& instance = *new nxProductCache;
    return instance;
}

// What comes for many products names their type, their exchange or both.
nxProductCache::nxProductCache()
{
    using Entry = nxProductCacheEntry;
    _entries.AddIndex(std::make_unique<nxIndexedMapHashIndex<Entry, '.'>>(std::vector{ExchangeField}));
    _entries.AddIndex(
        std::make_unique<nxIndexedMapPrefixIndex<Entry, '.'>>(std::vector{TypeField, ExchangeField}));
}

void nxProductCache::SetDefinitionService(nxProductDefinitionService* service)
{
    const nxMutexGuard subscriptionGuard(_subscriptionMutex);
    _DropSubscriptions();
    const nxMutexGuard guard(_derivedMutex);
    _service = service;
}

void nxProductCache::SetProductDefinition(const nxProductID& productID, const nxProductDefinition& definition)
{
    const std::unique_ptr<nxProductDefinition> named(definition.CopyInstance());
    named->SetGenericProductID(nxGenericProductID(productID));
    std::vector<nxProductDefinition*> definitions = {named.get()};
    bool isKnown = false;
    {
        const nxMutexGuard guard(_cacheMutex);
        const nxProductCacheEntry* entry = _entries.Find(GetIndexedMapKeyForDataObject(*named));
        isKnown = entry != nullptr && entry->HasSnapshot();
        if (!isKnown) OnDataObjectSnapshot({}, definitions, nullptr);
    }
    if (isKnown) DeliverUpdates(definitions);
}

void nxProductCache::DeliverUpdates(std::vector<nxProductDefinition*>& definitions)
{
    if (GetEnableEntryLevelLocking())
        OnDataObjectUpdate_FineGrained(definitions);
    else
        OnDataObjectUpdate(definitions);
}

nxProductDefinition* nxProductCache::GetProductDefinition(const nxProductID& productID, bool populate,
                                                          bool flag)
{
    if (populate) {
        const nxMutexGuard guard(_derivedMutex);
        populate = _service != nullptr;
    }
    return GetCachedDataObjectCopy(nxGenericProductID(productID), populate, flag);
}

std::vector<std::unique_ptr<nxProductDefinition>> nxProductCache::GetProductDefinitions(
    const nxGenericProductID& pattern) const
{
    CopyAction action;
    const nxMutexGuard guard(_cacheMutex);
    _entries.Apply(pattern.GetAsIndexedMapKey(), action);
    return std::move(action.copies);
}

bool nxProductCache::IsForManyProducts(const nxProductDefinition& definition)
{
    return !IsGiven(definition.GetGenericProductID().GetName());
}

std::string nxProductCache::GetIndexedMapKeyForDataObject(const nxProductDefinition& definition)
{
    return definition.GetGenericProductID().GetAsIndexedMapKey();
}

bool nxProductCache::IsWildcardDataObject(const nxProductDefinition& definition)
{
    return IsForManyProducts(definition);
}

bool nxProductCache::ShouldCacheDataObject(const nxProductDefinition& definition)
{
    const nxGenericProductID& productID = definition.GetGenericProductID();
    return IsGiven(productID.GetName()) || IsGiven(productID.GetExchange()) ||
           *productID.GetProductType().GetAsCode() != '\0';
}

nxDataObjectCacheSubscription* nxProductCache::CreateSubscription(const nxGenericProductID& productID)
{
    const nxMutexGuard guard(_derivedMutex);
    return new nxProductSubscription(_service, productID);
}
