#include "api/nxProductCacheEntry.h"

#include "api/nxDataObjectCacheEntryGuard.h"
#include "api/nxProductCache.h"

namespace {

void ApplyGiven(const nxProductDefinition& given, nxProductDefinition& definition)
{
    if (given.GetTickSize().IsValid()) definition.SetTickSize(given.GetTickSize());
    if (given.GetLotSize().IsValid()) definition.SetLotSize(given.GetLotSize());
    if (given.GetPointValue().IsValid()) definition.SetPointValue(given.GetPointValue());
    if (given.GetPriceManipulator().GetTickSize().IsValid())
        definition.SetPriceManipulator(given.GetPriceManipulator());
    if (!given.GetDescription().empty()) definition.SetDescription(given.GetDescription());
    if (!given.GetExchange().empty()) definition.SetExchange(given.GetExchange());
}

}  // namespace

void nxProductCacheEntry::LockEntry() const
{
    static_cast<void>(_entryMutex.Lock());
}

void nxProductCacheEntry::UnlockEntry() const
{
    static_cast<void>(_entryMutex.Unlock());
}

void nxProductCacheEntry::OnDataObjectUpdate(const nxProductDefinition& definition)
{
    const nxDataObjectCacheEntryGuard guard(*this);
    if (!nxProductCache::IsForManyProducts(definition) || GetDataObject() == nullptr) {
        SetDataObject(definition);
        NotifyObserversOfDataObjectUpdate(definition);
        return;
    }
    const std::unique_ptr<nxProductDefinition> changed(GetDataObjectCopy());
    ApplyGiven(definition, *changed);
    SetDataObject(*changed);
    NotifyObserversOfDataObjectUpdate(*changed);
}
