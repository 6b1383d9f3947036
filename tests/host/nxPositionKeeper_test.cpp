#include "host/accounts/nxPositionKeeper.h"

#include <gtest/gtest.h>

#include "host/accounts/nxFeeSchedule.h"
#include "tests/host/nxExchangeFixture.h"

namespace {

std::string Text(const nxExactAmount& amount)
{
    nxDecimal number = amount.GetAsDecimal();
    number.Normalise(0);
    return number.GetAsString();
}

// Positive volumes are bought, negative ones sold; fee 0.5 a fill; the money of a lot is 10 times the price.
TEST(nxPositionKeeper, ValuesFillsByTheMethodOfAverages)
{
    struct Row
    {
        const char* name;
        std::vector<std::pair<const char*, int>> fills;
        const char* mark;
        long long net;
        const char *average, *total, *open, *realised;
    };
    const Row rows[] = {
        {"nothing", {}, "100", 0, "", "0", "0", "0"},
        {"long", {{"100", 2}, {"103", 1}}, "104", 3, "101.0000000000", "89", "90", "-1"},
        {"short", {{"100", -2}}, "98.5", -2, "100.0000000000", "29.5", "30", "-0.5"},
        {"reduced: the average stays",
         {{"100", 2}, {"103", 1}, {"110", -1}},
         "104",
         2,
         "101.0000000000",
         "148.5",
         "60",
         "88.5"},
        {"turned: a new average", {{"100", 2}, {"110", -5}}, "108", -3, "110.0000000000", "259", "60", "199"},
        {"flat", {{"100", 2}, {"110", -2}}, "1", 0, "", "199", "0", "199"},
        {"no mark: at the average", {{"100", 2}, {"110", -1}}, "", 1, "100.0000000000", "99", "0", "99"},
        {"below zero", {{"-5", 2}, {"-3", -1}}, "-4", 1, "-5.0000000000", "29", "10", "19"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        nxPositionKeeper keeper(Dec("10"));
        for (const auto& [price, volume] : row.fills)
            keeper.AddFill(volume > 0 ? nxSide::Buy : nxSide::Sell, Dec(price),
                           static_cast<unsigned int>(std::abs(volume)), {Dec("0.5"), 1});
        const nxDecimal mark = Dec(row.mark);
        EXPECT_EQ(keeper.GetNet(), row.net);
        EXPECT_EQ(keeper.GetOpenAveragePrice().GetAsString(), row.average);
        EXPECT_EQ(Text(keeper.GetTotalProfit(mark)), row.total);
        EXPECT_EQ(Text(keeper.GetOpenProfit(mark)), row.open);
        EXPECT_EQ(Text(keeper.GetRealisedProfit(mark)), row.realised);
    }
}

TEST(nxPositionKeeper, ADayBeginsWithWhatIsOpenAtItsMark)
{
    nxPositionKeeper keeper;
    keeper.AddFill(nxSide::Buy, Dec("100"), 2, {});
    keeper.BeginDay(Dec("105"));
    keeper.AddFill(nxSide::Sell, Dec("107"), 1, {});
    EXPECT_EQ(Text(keeper.GetDayProfit(Dec("104"))), "1");
    EXPECT_EQ(Text(keeper.GetTotalProfit(Dec("104"))), "11");
    EXPECT_EQ(keeper.GetDay().volume.sell, 1u);
    EXPECT_EQ(keeper.GetDay().volume.buy, 0u);
    EXPECT_EQ(keeper.GetTotal().GetAveragePrice(nxSide::Buy), Dec("100"));
    EXPECT_TRUE(keeper.GetDay().GetAveragePrice(nxSide::Buy).IsNull());
}

// Beyond what one decimal number holds, and with a rest of a third at each step.
TEST(nxPositionKeeper, StaysExactWithLargeAndOddSums)
{
    nxPositionKeeper keeper(Dec("0.00000001"));
    for (int i = 0; i < 1000; ++i) {
        keeper.AddFill(nxSide::Buy, Dec("61800.12345678"), 1'000'000'000, {});
        keeper.AddFill(nxSide::Sell, Dec("61800.12345679"), 333'333'333, {});
    }
    const nxDecimal mark = Dec("61800.12345678");
    EXPECT_EQ(Text(keeper.GetTotalProfit(mark)), "0.0000333333");  // 333,333,333,000 * 1e-8 * 1e-8
    EXPECT_TRUE(keeper.GetOpenProfit(mark) + keeper.GetRealisedProfit(mark) == keeper.GetTotalProfit(mark));
    EXPECT_LT(keeper.GetOpenAveragePrice() - mark, Dec("0.0000001"));
}

TEST(nxFeeSchedule, TakesASumForEachLotOrARateOfTheMoney)
{
    struct Row
    {
        nxFeeSchedule fees;
        bool isMaker;
        const char* price;
        const char* expected;
    };
    const Row rows[] = {
        {{Dec("0.25"), Dec("1.5"), false}, true, "101.5", "0.75"},
        {{Dec("-0.25"), Dec("1.5"), false}, false, "101.5", "4.5"},
        {{Dec("-0.25"), Dec("1.5"), false}, true, "101.5", "-0.75"},
        {{Dec("-0.00015"), Dec("0.0004"), true}, true, "101.5", "-2.28375"},
        {{Dec("-0.00015"), Dec("0.0004"), true}, false, "101.5", "6.09"},
        {{Dec("-0.00015"), Dec("0.0004"), true}, false, "-101.5", "6.09"},
        {{}, true, "101.5", "0"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Text(row.fees.GetFee(row.isMaker, Dec(row.price), 3, Dec("50"))), row.expected);
}

}  // namespace
