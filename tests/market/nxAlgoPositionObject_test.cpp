#include "scriptFramework/market/nxAlgoPositionObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoPosition, NetsAreLongMinusShort)
{
    const struct
    {
        unsigned long long isLong, isShort;
        long long total, local;
        int day;
    } rows[] = {
        {0, 0, 0, 0, 0},
        {3, 10, -7, -7, -7},
        {10, 3, 7, 7, 7},
        {0, 0x7FFFFFFF, -0x7FFFFFFF, -0x7FFFFFFF, -0x7FFFFFFF},
        {0x80000000, 0, 0x80000000, -0x80000000ll, -0x7FFFFFFF - 1},  // 32 bits wrap
        {0xFFFFFFFF, 0, 0xFFFFFFFF, -1, -1},
        {0x100000005, 1, 0x100000004, 4, 4},  // and cut what they are given
        {1, 0x200000003, -0x200000002, -2, -2},
    };
    for (const auto& row : rows) {
        nxAlgoPosition position;
        position.SetTotalLong(row.isLong);
        position.SetTotalShort(row.isShort);
        position.SetLocalLong(row.isLong);
        position.SetLocalShort(row.isShort);
        position.SetDayLong(static_cast<unsigned int>(row.isLong));
        position.SetDayShort(static_cast<unsigned int>(row.isShort));
        EXPECT_EQ(position.GetTotalNet(), row.total) << row.isLong << " " << row.isShort;
        EXPECT_EQ(position.GetLocalNet(), row.local) << row.isLong << " " << row.isShort;
        EXPECT_EQ(position.GetDayNet(), row.day) << row.isLong << " " << row.isShort;
        EXPECT_EQ(position.GetLocalLong(), row.isLong & 0xFFFFFFFF);
    }
}

// A different number in every field, so that no two properties can be mixed up.
TEST(nxAlgoPositionObject, EachPropertyReadsItsOwnField)
{
    const auto number = [](int value) { return nxDecimal::FromMantissa(value, 1); };
    nxAlgoPosition position;
    position.SetTotalShort(5000000000);
    position.SetTotalLong(6000000000);
    position.SetLocalShort(30);
    position.SetLocalLong(10);
    position.SetDayShort(2);
    position.SetDayLong(9);
    position.SetDayAverageBuyPrice(number(11));
    position.SetDayAverageSellPrice(number(12));
    position.SetTotalAverageBuyPrice(number(13));
    position.SetTotalAverageSellPrice(number(14));
    position.SetRunningOpenDayAveragePrice(number(15));
    position.SetCurrency(nxCurrency_EUR);
    position.SetTotalCost(number(16));
    position.SetTotalRevenue(number(17));
    position.SetDayCost(number(18));
    position.SetDayRevenue(number(19));
    position.SetOpenPos(-4);
    position.SetLocalCost(number(-20));
    position.SetLocalRevenue(number(21));
    position.SetLocalAverageBuyPrice(nxDecimal());
    position.SetLocalAverageSellPrice(number(23));
    const struct
    {
        const char* property;
        const char* expected;
    } rows[] = {
        {"id", "9"},
        {"totalNet", "1000000000"},
        {"totalShort", "5000000000"},
        {"totalLong", "6000000000"},
        {"totalAverageBuyPrice", "1.3"},
        {"totalAverageSellPrice", "1.4"},
        {"totalCost", "1.6"},
        {"totalRevenue", "1.7"},
        {"localNet", "-20"},
        {"localShort", "30"},
        {"localLong", "10"},
        {"localAverageBuyPrice", "nil"},
        {"localAverageSellPrice", "2.3"},
        {"localCost", "-2"},
        {"localRevenue", "2.1"},
        {"dayNet", "7"},
        {"dayShort", "2"},
        {"dayLong", "9"},
        {"dayAverageBuyPrice", "1.1"},
        {"dayAverageSellPrice", "1.2"},
        {"dayCost", "1.8"},
        {"dayRevenue", "1.9"},
        {"openAveragePrice", "1.5"},
        {"openPos", "-4"},
        {"currency", "'EUR'"},
    };
    nxScriptJob script;
    nxAlgoPositionObject object(&script.host, 9, position);
    ASSERT_TRUE(script.job.OnPosition(object).IsSuccess());
    for (const auto& row : rows)
        EXPECT_EQ(script.Evaluate(std::string("it.") + row.property), row.expected) << row.property;

    nxAlgoPositionObject fresh(&script.host, 9);
    ASSERT_TRUE(script.job.OnPosition(fresh).IsSuccess());
    for (const auto& row : rows) {
        const std::string property = row.property;
        EXPECT_EQ(script.Evaluate("it." + property), property == "id"         ? "9"
                                                     : property == "currency" ? "'UNDEFINED'"
                                                                              : "0")
            << property;
    }
}

TEST(nxAlgoPositionObject, HoldsACopy)
{
    nxScriptJob script;
    nxAlgoPosition position;
    nxAlgoPositionObject object(&script.host, 1, position);
    ASSERT_TRUE(script.job.OnPosition(object).IsSuccess());
    position.SetOpenPos(5);
    EXPECT_EQ(script.Evaluate("it.openPos"), "0");
    object.SetPosition(position);
    EXPECT_EQ(script.Evaluate("it.openPos"), "5");
}

}  // namespace
