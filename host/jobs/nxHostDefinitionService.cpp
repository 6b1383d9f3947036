#include "host/jobs/nxHostDefinitionService.h"

#include <memory>

#include "api/nxProductCache.h"
#include "base/records/nxStrategyDefinition.h"
#include "base/threads/nxMutexGuard.h"

namespace {

void Fill(const nxProductDescription& product, nxProductDefinition& definition)
{
    definition.SetName(product.name);
    definition.SetDescription(product.description);
    definition.SetExchange(product.exchange);
    definition.SetTickSize(product.tickSize);
    definition.SetLotSize(product.lotSize);
    definition.SetPriceManipulator(nxPriceManipulator(product.tickSize));
    if (product.pointValue.IsValid()) definition.SetPointValue(nxMoney(product.pointValue, product.currency));
}

std::unique_ptr<nxProductDefinition> MakeDefinition(const nxProductDescription& product,
                                                    const nxGenericProductID& productID)
{
    std::unique_ptr<nxProductDefinition> definition;
    if (product.IsStrategy()) {
        auto strategy = std::make_unique<nxStrategyDefinition>();
        strategy->SetSyntheticStrategyPriceOffset(product.priceOffset);
        for (const nxProductLegDescription& described : product.legs) {
            nxStrategyLeg leg;
            // By its name alone, which is what the host finds a product by.
            leg.SetProductID(nxProductID(described.product));
            leg.SetBuySell(nxGetBuySell(described.side));
            leg.SetPriceRatio(described.priceRatio);
            leg.SetTradeRatio(described.tradeRatio);
            strategy->AddStrategyLeg(leg);
        }
        definition = std::move(strategy);
    } else {
        definition = std::make_unique<nxProductDefinition>();
    }
    Fill(product, *definition);
    definition->SetGenericProductID(productID);
    return definition;
}

}  // namespace

nxGenericProductID nxHostDefinitionService::GetIdentity(const std::string& name, bool isStrategy)
{
    return nxGenericProductID(name,
                              isStrategy ? nxProductTypeEnum(nxProductType_Strategy) : nxProductTypeEnum());
}

nxHostDefinitionService::~nxHostDefinitionService()
{
    if (!_isInService) return;
    nxProductCache::GetInstance().SetDefinitionService(nullptr);
    nxProductCache::GetInstance().Destroy();
}

void nxHostDefinitionService::SetProducts(nxProductDescriptions products)
{
    const bool isEmpty = products->empty();
    std::vector<std::unique_ptr<nxProductDefinition>> updates;
    {
        const nxMutexGuard guard(_mutex);
        _byName.clear();
        _products = std::move(products);
        for (const nxProductDescription& product : *_products)
            _byName.emplace(product.name, &product);
        for (const auto& [key, productID] : _subscribed) {
            const auto found = _byName.find(productID.GetName());
            if (found != _byName.end()) updates.push_back(MakeDefinition(*found->second, productID));
        }
    }
    std::vector<nxProductDefinition*> views;
    for (const auto& update : updates)
        views.push_back(update.get());
    if (!views.empty()) nxProductCache::GetInstance().DeliverUpdates(views);
    if (_isInService || isEmpty) return;
    _isInService = true;
    nxProductCache::GetInstance().SetDefinitionService(this);
}

nxErrorEnum nxHostDefinitionService::Subscribe(const nxGenericProductID& productID)
{
    const nxMutexGuard guard(_mutex);
    if (!_byName.contains(productID.GetName())) return nxError_GeneralFailure;
    _subscribed.emplace(productID.GetAsIndexedMapKey(), productID);
    return {};
}

nxErrorEnum nxHostDefinitionService::Unsubscribe(const nxGenericProductID& productID)
{
    const nxMutexGuard guard(_mutex);
    _subscribed.erase(productID.GetAsIndexedMapKey());
    return {};
}

nxErrorEnum nxHostDefinitionService::GetSnapshot(const nxGenericProductID& productID,
                                                 nxProductCacheEntry* requester, bool)
{
    std::unique_ptr<nxProductDefinition> definition;
    {
        const nxMutexGuard guard(_mutex);
        const auto found = _byName.find(productID.GetName());
        if (found == _byName.end()) return nxError_GeneralFailure;
        definition = MakeDefinition(*found->second, productID);
    }
    std::vector<nxProductDefinition*> views = {definition.get()};
    nxProductCache::GetInstance().OnDataObjectSnapshot({}, views, requester);
    return {};
}
