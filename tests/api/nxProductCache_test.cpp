#include "api/nxProductCache.h"

#include <gtest/gtest.h>

#include "base/records/nxStrategyDefinition.h"
#include "tests/api/nxMemoryDefinitionService.h"

namespace {

nxProductID Future(const std::string& name, const std::string& exchange = {})
{
    return nxProductID(name, nxProductType_Future, exchange);
}

nxProductDefinition Make(const nxGenericProductID& productID, int tick)
{
    nxProductDefinition definition;
    definition.SetGenericProductID(productID);
    definition.SetName(productID.GetName());
    definition.SetTickSize(nxDecimal::FromMantissa(tick, 2));
    return definition;
}

// "name tick", or "null".
std::string Ask(const nxProductID& productID, bool populate = false)
{
    const std::unique_ptr<nxProductDefinition> definition(
        nxProductCache::GetInstance().GetProductDefinition(productID, populate, false));
    return definition == nullptr ? "null"
                                 : definition->GetName() + " " + definition->GetTickSize().GetAsLogString();
}

TEST(nxProductCache, AsksTheServiceOnceAndKeepsWhatItBrought)
{
    EXPECT_EQ(Ask(Future("A"), true), "null");  // there is no service
    nxStrategyDefinition spread;
    spread.SetGenericProductID(nxGenericProductID("S", nxProductType_Strategy));
    spread.AddStrategyLeg(nxStrategyLeg());
    {
        nxMemoryDefinitionService service;
        service.Add(Make(nxGenericProductID(Future("A")), 1));
        service.Add(spread);
        EXPECT_EQ(Ask(Future("A")), "null");
        EXPECT_EQ(Ask(Future("A"), true) + ", " + Ask(Future("A"), true), "A 0.01, A 0.01");
        EXPECT_EQ(Ask(Future("B"), true) + ", " + Ask(Future("B"), true), "null, null");
        EXPECT_EQ(Ask(nxProductID("A"), true), "null");  // of no type
        EXPECT_EQ(service.calls, "+A ?A +B ?B ");
        nxMemoryDefinitionService::Push(Make(nxGenericProductID(Future("A")), 2));
        EXPECT_EQ(Ask(Future("A")), "A 0.02");
        const std::unique_ptr<nxProductDefinition> copy(nxProductCache::GetInstance().GetProductDefinition(
            nxProductID("S", nxProductType_Strategy), true, false));
        const auto* strategy = dynamic_cast<const nxStrategyDefinition*>(copy.get());
        ASSERT_NE(strategy, nullptr);
        EXPECT_EQ(strategy->GetStrategyLegCount(), 1u);
        service.calls.clear();
        nxProductCache::GetInstance().SetDefinitionService(nullptr);
        EXPECT_EQ(service.calls, "-A -B -S ");
        EXPECT_EQ(Ask(Future("A"), true) + ", " + Ask(Future("C"), true), "A 0.02, null");
    }
    EXPECT_EQ(Ask(Future("A")), "null");
}

TEST(nxProductCache, ADefinitionWithoutANameChangesWhatItGives)
{
    nxProductCache& cache = nxProductCache::GetInstance();
    nxStrategyDefinition spread;
    spread.SetName("spread");
    spread.SetDescription("kept");
    spread.AddStrategyLeg(nxStrategyLeg());
    const nxProductID strategy("S", nxProductType_Strategy, "X");
    cache.SetProductDefinition(strategy, spread);
    cache.SetProductDefinition(Future("A", "X"), Make({}, 1));
    cache.SetProductDefinition(Future("A", "Y"), Make({}, 1));
    cache.SetProductDefinition(Future("B"), Make({}, 1));
    nxMemoryDefinitionService::Push(Make(nxGenericProductID("", {}, "X"), 5));
    nxMemoryDefinitionService::Push(Make(nxGenericProductID(), 7));  // for nobody
    EXPECT_EQ(Ask(strategy) + Ask(Future("A", "X")) + Ask(Future("A", "Y")) + Ask(Future("B")),
              "spread 0.05 0.05 0.01 0.01");
    nxMemoryDefinitionService::Push(Make(nxGenericProductID("*", nxProductType_Future), 9));
    EXPECT_EQ(Ask(strategy) + Ask(Future("A", "X")) + Ask(Future("A", "Y")) + Ask(Future("B")),
              "spread 0.05 0.09 0.09 0.09");
    const std::unique_ptr<nxProductDefinition> copy(cache.GetProductDefinition(strategy, false, false));
    EXPECT_EQ(copy->GetDescription(), "kept");
    EXPECT_EQ(copy->GetGenericProductID(), nxGenericProductID(strategy));
    EXPECT_EQ(dynamic_cast<nxStrategyDefinition&>(*copy).GetStrategyLegCount(), 1u);

    const struct
    {
        nxGenericProductID pattern;
        std::size_t count;
    } rows[] = {
        {nxGenericProductID(), 4},
        {nxGenericProductID("A"), 2},
        {nxGenericProductID("*", nxProductType_Future), 3},
        {nxGenericProductID("", {}, "X"), 2},
        {nxGenericProductID("", nxProductType_Future, "X"), 1},
        {nxGenericProductID("B", nxProductType_Future), 1},
        {nxGenericProductID("C"), 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(cache.GetProductDefinitions(row.pattern).size(), row.count)
            << row.pattern.GetAsIndexedMapKey();
    cache.Destroy();
}

}  // namespace
