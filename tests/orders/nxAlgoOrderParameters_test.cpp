#include "scriptFramework/orders/nxAlgoOrderParameters.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestOrder.h"

namespace {

// Sets of parameters as scripts make them, by order:work on a product with a tick of 0.25.
class nxAlgoOrderParametersTest : public testing::Test
{
protected:
    nxAlgoOrderParametersTest()
    {
        product.SetPriceManipulator(nxPriceManipulator(nxDecimal::FromMantissa(25, 2)));
        EXPECT_TRUE(script.job.OnOrderNew(order).IsSuccess());
    }

    // The text of the error, or the line that Show logs.
    std::string Work(const std::string& table)
    {
        const std::string error = script.Evaluate("it:work(" + table + ")");
        return error.empty() ? Show(order.changes) : error;
    }
    static std::string Show(const nxAlgoOrderParameters& parameters)
    {
        nxRecordingLog log;
        parameters.Show("P");
        return log.TakeLines();
    }

    nxScriptJob script;
    nxTestProduct& product = script.AddProduct("FDAX", 12);
    nxTestOrder order{&script.host, &product};
};

constexpr const char* Everything =
    "{volume = 1, price = 2.25, stopPrice = 3, stopVolume = 4, icebergMinPeakSize = 5, "
    "icebergMaxPeakSize = 6, icebergThreshold = 7, bracketProfit = 8, bracketStopLoss = 9, "
    "bracketStopLossType = 'LIMIT', bracketStopLossLimit = 10, bracketStopLossTrailing = 'true', "
    "bracketStopLossVolume = 11, payUpVolume = 12, minVolume = 13, finesseTicks = 14, finesseVolume = 15, "
    "finessePaperOnly = 'TRUE', algoID = 16, accountID = 17}";

TEST_F(nxAlgoOrderParametersTest, ReadsTheKeysOfTheTable)
{
    const std::pair<std::string, std::string> rows[] = {
        {Everything,
         " Volume (1) Price (2.25) Stop Price (3) Stop Volume (4) Iceberg Min Peak Size (5)"
         " Iceberg Mix Peak Size (6) Iceberg Threshold (7) Bracket Profit Ticks (8)"
         " Bracket Stop Loss Ticks (9) Bracket Stop Loss Order Type (LIMIT)"
         " Bracket Stop Loss Limit Ticks (10) Bracket Stop Loss Volume (11)"
         " Bracket Stop Loss Execution (TRAILING_STOP) Pay Up Volume (12) Min Volume (13)"
         " Finesse Ticks (14) Finesse Volume (15) Finesse Paper Only (TRUE)"},
        // A valid date ends the reading.
        {"{volume = 10, stopVolume = 3, expiryDate = '20301231', icebergThreshold = 5, algoID = 'x'}",
         " Volume (10) Stop Volume (3) Expiry Date (20301231:00:00:00)"},
        {"{expiryDate = 20301231}", " Expiry Date (20301231:00:00:00)"},
        // Only the price is rounded; numbers that Lua writes with an exponent have ten places.
        {"{price = 100.13, stopPrice = 99.456}", " Price (100.25) Stop Price (99.456)"},
        {"{price = 0.00001, stopPrice = 0.00001}", " Price (0.00) Stop Price (0.0000100000)"},
        // What is no text or number counts as not given, and so does an empty text.
        {"{volume = '', price = {}, stopVolume = false, expiryDate = '', finessePaperOnly = true}", ""},
        {"{bracketStopLossTrailing = 'TRUE', bracketStopLossType = 'MARKET'}",
         " Bracket Stop Loss Order Type (MARKET) Bracket Stop Loss Execution (STOP)"},
    };
    for (const auto& [table, expected] : rows)
        EXPECT_EQ(Work(table), "32 P" + expected + "\n") << table;
}

TEST_F(nxAlgoOrderParametersTest, RefusesWhatItCanNotRead)
{
    const std::pair<const char*, const char*> rows[] = {
        {"{volume = 10.5}", "Can not set volume to [10.5]. not a number"},
        {"{volume = 4294967296}", "Can not set volume to [4294967296]. number out of range"},
        {"{stopPrice = '1e-5'}", "Can not set stopPrice to [1e-5]. not a number"},
        {"{bracketStopLossType = 'STOP'}",
         "Can not set bracketStopLossType to ]STOP] should be MARKET or LIMIT"},
        {"{finessePaperOnly = 'maybe'}", "Can not set finessePaperOnly to [maybe]. UNDEFINED"},
        {"{expiryDate = '20301301'}", "Invalid expiryDate = [20301301] should be of form YYYYMMDD"},
    };
    for (const auto& [table, expected] : rows)
        EXPECT_EQ(Work(table), std::string("error: Work parameters incorrect. ") + expected) << table;
    EXPECT_EQ(order.locks, "");
}

// From each key on all are bad: the first is told of.
TEST_F(nxAlgoOrderParametersTest, ReadsTheKeysInAFixedOrder)
{
    const std::string keys =
        "volume price stopPrice stopVolume expiryDate icebergMinPeakSize icebergMaxPeakSize icebergThreshold "
        "bracketProfit bracketStopLoss bracketStopLossType bracketStopLossLimit bracketStopLossVolume "
        "finesseTicks finesseVolume finessePaperOnly minVolume payUpVolume algoID accountID ";
    for (std::size_t first = 0; first < keys.size(); first = keys.find(' ', first) + 1) {
        std::istringstream rest(keys.substr(first));
        std::string table;
        for (std::string key; rest >> key;)
            table += key + " = 'x', ";
        const std::string key = keys.substr(first, keys.find(' ', first) - first);
        const std::string error = Work("{" + table + "}");
        EXPECT_NE(error.find(key == "expiryDate" ? "expiryDate = [x]" : " set " + key + " to "),
                  std::string::npos)
            << error;
    }
}

TEST_F(nxAlgoOrderParametersTest, AnswersForASetAndMergesAllButTheIdsOfOneCall)
{
    EXPECT_FALSE(order.changes.IsContingent() || order.changes.IsFinesse());
    Work(Everything);
    nxAlgoOrderParameters merged;
    merged.Merge(order.changes);
    EXPECT_EQ(Show(merged), Show(order.changes));
    EXPECT_TRUE(merged.GetAlgoID().IsNoChange() && merged.GetAccountID().IsNoChange());

    merged = order.changes;
    Work("{finesseTicks = 1, payUpVolume = 0}");
    EXPECT_TRUE(order.changes.IsContingent() && !order.changes.IsFinesse());
    Work("{finesseTicks = 1, finesseVolume = 0}");
    EXPECT_TRUE(!order.changes.IsContingent() && order.changes.IsFinesse());
    Work("{price = 1e300, minVolume = 20, algoID = 21, accountID = 22}");  // no decimal: a null price
    merged.Merge(order.changes);
    EXPECT_TRUE(merged.GetPrice().IsNull());
    EXPECT_EQ(merged.GetMinVol(), 20u);
    EXPECT_EQ(merged.GetVolume(), 1u);
    EXPECT_EQ(merged.GetAlgoID(), 16u);
    EXPECT_EQ(merged.GetAccountID(), 17u);
}

}  // namespace
