#include "scriptFramework/analytics/nxTimeSeries.h"

#include <gtest/gtest.h>

#include <cmath>

#include "scriptFramework/analytics/nxTimeSeries_Trade.h"
#include "tests/support/nxRowFile.h"
#include "tests/support/nxSetTime.h"

namespace {

constexpr long long Start = 1704724200;

nxDecimal Decimal(const char* text)
{
    nxDecimal value;
    EXPECT_TRUE(value.SetFromString(text).IsSuccess()) << text;
    return value;
}

class nxTimeSeriesTest : public testing::Test
{
protected:
    struct Trade
    {
        double seconds;
        const char* price;
        unsigned int volume;
    };

    void SetTime(double seconds)
    {
        time.now = nxTimeStamp::FromNanoseconds(Start * 1000000000 + std::llround(seconds * 1e9));
    }
    void Add(std::initializer_list<Trade> trades)
    {
        for (const auto& [seconds, price, volume] : trades) {
            SetTime(seconds);
            series.AddTrade(Decimal(price), volume);
        }
    }
    // The statistics with all their places: a zero of 4 places is another one than a zero of 8.
    std::string Recalculate()
    {
        series.Recalculate();
        std::string text =
            std::to_string(series.GetSize()) + " " + std::to_string(series.GetTotalTraded().GetValue());
        for (const nxDecimal* value :
             {&series.GetMin(), &series.GetMax(), &series.GetRange(), &series.GetFirst(), &series.GetLast(),
              &series.GetAverage(), &series.GetStandardDeviation(), &series.GetVWAP(),
              &series.GetAverageVolume(), &series.GetPercentageChange(), &series.GetSlope()})
            text += " " + (value->IsNull() ? "-" : value->GetAsString());
        return text;
    }

    nxSetTime time{nxTimeStamp(Start, 0u)};
    nxTimeSeries_Trade series;
};

// Expected values of these tests: Python's decimals, over the same trades.
TEST_F(nxTimeSeriesTest, CalculatesOverTheTradesInTheWindow)
{
    series.SetDuration(10);
    Add({{0, "100.25", 3}, {1, "100.75", 1}, {2.5, "99.50", 4}, {4, "101", 2}});
    EXPECT_TRUE(series.GetMin().IsNull() && series.GetTotalTraded().IsNull()) << "calculated at insertion";
    EXPECT_EQ(Recalculate(),
              "4 10 99.50 101 1.50 100.25 101 100.37500000 0.57282196 100.15000000 2.50000000 0.74812968 -");
    series.EnableRegression();
    EXPECT_TRUE(Recalculate().ends_with(" 0.74812968 0.07482993"));
    // One that is exactly as old as the window stays.
    SetTime(10);
    EXPECT_EQ(Recalculate().substr(0, 4), "4 10");
    SetTime(10.001);
    EXPECT_EQ(Recalculate().substr(0, 3), "3 7");
    SetTime(14);
    EXPECT_EQ(Recalculate(),
              "1 2 101 101 0 101 101 101.00000000 0.00000000 101.00000000 2.00000000 0.0000 0.0000");
    SetTime(14.001);
    EXPECT_EQ(Recalculate(), "0 0 - - - - - - - - - 0.0000 -");
    // Seconds since 1970 have no room for what lies between these.
    Add({{20, "1", 1}, {20.001, "2", 1}, {20.002, "3", 1}});
    EXPECT_TRUE(Recalculate().ends_with(" 1000.00000000")) << Recalculate();
}

TEST_F(nxTimeSeriesTest, SumsOfZeroAndSumsThatWrap)
{
    nxExpectRows("scripts/times.txt", [this](const std::string& trades) {
        series.SetDuration(-1);  // all go
        static_cast<void>(Recalculate());
        series.SetDuration(0);
        const auto words = nxGetWords(trades);
        for (std::size_t i = 0; i < words.size(); i += 3)
            series.AddTrade(Decimal(words[i].c_str()), static_cast<unsigned int>(std::stoul(words[i + 2])));
        return Recalculate();
    });
}

TEST_F(nxTimeSeriesTest, ThePlainSeriesKnowsItsLowestValue)
{
    nxTimeSeries values;
    values.SetDuration(5);
    EXPECT_TRUE(values.GetMinValue().IsNull());
    for (const char* value : {"1.5", "2.5", "2"}) {
        values.AddValue(Decimal(value));
        SetTime(2);
    }
    SetTime(5.5);
    EXPECT_EQ(values.GetMinValue().GetAsString(), "1.5");
    values.Adjust();
    EXPECT_EQ(values.GetMinValue().GetAsString(), "2");
}

}  // namespace
