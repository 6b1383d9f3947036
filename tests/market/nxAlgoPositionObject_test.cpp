#include "scriptFramework/market/nxAlgoPositionObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoPosition, NetsAreLongMinusShort)
{
    const std::tuple<unsigned long long, unsigned long long, long long, long long, int> rows[] = {
        {3, 10, -7, -7, -7},
        {0, 0x7FFFFFFF, -0x7FFFFFFF, -0x7FFFFFFF, -0x7FFFFFFF},
        {0x80000000, 0, 0x80000000, -0x80000000ll, -0x7FFFFFFF - 1},  // 32 bits wrap
        {0x100000005, 1, 0x100000004, 4, 4},                          // and cut what they are given
        {1, 0x200000003, -0x200000002, -2, -2},
    };
    for (const auto& [isLong, isShort, total, local, day] : rows) {
        nxAlgoPosition position;
        position.SetTotalLong(isLong);
        position.SetTotalShort(isShort);
        position.SetLocalLong(isLong);
        position.SetLocalShort(isShort);
        position.SetDayLong(static_cast<unsigned int>(isLong));
        position.SetDayShort(static_cast<unsigned int>(isShort));
        EXPECT_EQ(position.GetTotalNet(), total) << isLong << " " << isShort;
        EXPECT_EQ(position.GetLocalNet(), local) << isLong << " " << isShort;
        EXPECT_EQ(position.GetDayNet(), day) << isLong << " " << isShort;
        EXPECT_EQ(position.GetLocalLong(), isLong & 0xFFFFFFFF);
    }
}

// A different number in every field, so that no two properties can be mixed up.
TEST(nxAlgoPositionObject, EachPropertyReadsItsOwnField)
{
    using P = nxAlgoPosition;
    P position;
    int price = 10;
    for (const auto set : {&P::SetDayAverageBuyPrice, &P::SetDayAverageSellPrice, &P::SetTotalAverageBuyPrice,
                           &P::SetTotalAverageSellPrice, &P::SetRunningOpenDayAveragePrice, &P::SetTotalCost,
                           &P::SetTotalRevenue, &P::SetDayCost, &P::SetDayRevenue, &P::SetLocalCost,
                           &P::SetLocalRevenue, &P::SetLocalAverageSellPrice})
        (position.*set)(nxDecimal::FromMantissa(++price, 1));
    position.SetLocalAverageBuyPrice(nxDecimal());
    position.SetTotalShort(5000000000);
    position.SetTotalLong(6000000000);
    position.SetLocalShort(30);
    position.SetLocalLong(10);
    position.SetDayShort(2);
    position.SetDayLong(9);
    position.SetOpenPos(-4);
    position.SetCurrency(nxCurrency_EUR);
    const char* const read =
        "it.id, it.totalNet, it.totalShort, it.totalLong, it.totalAverageBuyPrice, it.totalAverageSellPrice, "
        "it.totalCost, it.totalRevenue, it.localNet, it.localShort, it.localLong, it.localAverageBuyPrice, "
        "it.localAverageSellPrice, it.localCost, it.localRevenue, it.dayNet, it.dayShort, it.dayLong, "
        "it.dayAverageBuyPrice, it.dayAverageSellPrice, it.dayCost, it.dayRevenue, it.openAveragePrice, "
        "it.openPos, it.currency";
    nxScriptJob script;
    nxAlgoPositionObject object(&script.host, 9, position);
    ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPosition, object));
    EXPECT_EQ(script.Evaluate(read),
              "9 1000000000 5000000000 6000000000 1.3 1.4 1.6 1.7 -20 30 10 nil 2.2 2 2.1 7 2 9 1.1 1.2 1.8 "
              "1.9 1.5 -4 'EUR'");
    nxAlgoPositionObject fresh(&script.host, 9);
    ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnPosition, fresh));
    EXPECT_EQ(script.Evaluate(read), "9 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 'UNDEFINED'");
}

}  // namespace
