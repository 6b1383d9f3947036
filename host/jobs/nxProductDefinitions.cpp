#include "host/jobs/nxProductDefinitions.h"

#include <memory>

#include "api/nxProductCache.h"
#include "base/records/nxStrategyDefinition.h"

namespace {

void Fill(const nxProductDescription& product, nxProductDefinition& definition)
{
    definition.SetGenericProductID(nxProductDefinitions::GetIdentity(product.name, product.IsStrategy()));
    definition.SetName(product.name);
    definition.SetDescription(product.description);
    definition.SetExchange(product.exchange);
    definition.SetTickSize(product.tickSize);
    definition.SetLotSize(product.lotSize);
    definition.SetPriceManipulator(nxPriceManipulator(product.tickSize));
    if (product.pointValue.IsValid()) definition.SetPointValue(nxMoney(product.pointValue, product.currency));
}

nxStrategyDefinition GetStrategy(const nxProductDescription& product)
{
    nxStrategyDefinition definition;
    Fill(product, definition);
    definition.SetSyntheticStrategyPriceOffset(product.priceOffset);
    for (const nxProductLegDescription& described : product.legs) {
        nxStrategyLeg leg;
        // By its name alone, which is what the host finds a product by.
        leg.SetProductID(nxProductID(described.product));
        leg.SetBuySell(described.side);
        leg.SetPriceRatio(described.priceRatio);
        leg.SetTradeRatio(described.tradeRatio);
        definition.AddStrategyLeg(leg);
    }
    return definition;
}

}  // namespace

nxGenericProductID nxProductDefinitions::GetIdentity(const std::string& name, bool isStrategy)
{
    return nxGenericProductID(name,
                              isStrategy ? nxProductTypeEnum(nxProductType_Strategy) : nxProductTypeEnum());
}

nxProductDefinitions::~nxProductDefinitions()
{
    nxProductCache::GetInstance().Clear();
}

void nxProductDefinitions::Publish(const std::vector<nxProductDescription>& products)
{
    for (const nxProductDescription& product : products) {
        const std::unique_ptr<nxProductID> id(
            GetIdentity(product.name, product.IsStrategy()).GetAsProductID());
        if (product.IsStrategy()) {
            nxProductCache::GetInstance().SetProductDefinition(*id, GetStrategy(product));
        } else {
            nxProductDefinition definition;
            Fill(product, definition);
            nxProductCache::GetInstance().SetProductDefinition(*id, definition);
        }
    }
}
