#include "base/records/nxProductID.h"

#include <gtest/gtest.h>

#include <memory>

#include "base/records/nxGenericProductID.h"
#include "base/records/nxStrategyDefinition.h"
#include "base/records/nxStrategyID.h"

namespace {

const nxProductTypeEnum future(nxProductType_Future);

TEST(nxGenericProductID, MakesTextKeyAndExactIdentity)
{
    const struct
    {
        nxGenericProductID id;
        const char *text, *key, *exact;  // exact: empty when there is none
    } rows[] = {
        {nxGenericProductID(), "*", "*.*.*.*.*.*.*.*.*", ""},
        {nxGenericProductID("*", future, "EX"), "EX:*", "F.*.EX.*.*.*.*.*.*", ""},
        {nxGenericProductID("ABC", future, "*"), "ABC", "F.ABC.*.*.*.*.*.*.*", "ABC"},
        {nxGenericProductID("ABC", future, "EX"), "EX:ABC", "F.ABC.EX.*.*.*.*.*.*", "EX:ABC"},
        {nxGenericProductID("A.B%"), "A.B%", "*.A%2EB%25.*.*.*.*.*.*.*", "A.B%"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.id.GetAsString(), row.text);
        EXPECT_EQ(row.id.GetAsIndexedMapKey(), row.key);
        const std::unique_ptr<nxProductID> exact(row.id.GetAsProductID());
        ASSERT_EQ(exact != nullptr, *row.exact != '\0') << row.text;
        if (exact == nullptr) continue;
        EXPECT_EQ(exact->GetAsString(), row.exact);
        EXPECT_EQ(exact->GetProductType(), row.id.GetProductType());
    }
    const nxGenericProductID id("ABC", future, "EX");
    EXPECT_EQ(nxGenericProductID(nxProductID("ABC", future, "EX")), id);
}

TEST(nxStrategyDefinition, ACopyMadeThroughTheBaseHasLegsOfItsOwn)
{
    nxStrategyDefinition strategy;
    nxStrategyLeg leg;
    leg.SetProductID(nxStrategyID("LEG", nxStrategyTypeEnum(nxStrategyType_Custom), future));
    leg.SetTradeRatio(nxDecimalOne);
    strategy.AddStrategyLeg(leg);
    leg.SetTradeRatio(-nxDecimalOne);
    strategy.AddStrategyLeg(leg);

    const nxProductDefinition& base = strategy;
    const std::unique_ptr<nxProductDefinition> copy(base.CopyInstance());
    auto* const copied = dynamic_cast<nxStrategyDefinition*>(copy.get());
    ASSERT_NE(copied, nullptr);
    strategy.GetStrategyLeg(0)->SetTradeRatio(nxDecimalZero);
    ASSERT_EQ(copied->GetStrategyLegCount(), 2u);
    EXPECT_EQ(copied->GetStrategyLeg(0)->GetTradeRatio(), nxDecimalOne);
    EXPECT_EQ(copied->GetStrategyLeg(1)->GetTradeRatio(), -nxDecimalOne);
    EXPECT_EQ(copied->GetStrategyLeg(1)->GetProductID()->GetAsString(), "LEG");
    EXPECT_EQ(copied->GetStrategyLeg(2), nullptr);
    EXPECT_EQ(nxStrategyLeg().GetProductID(), nullptr);
}

}  // namespace
