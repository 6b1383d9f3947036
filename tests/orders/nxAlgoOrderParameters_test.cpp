#include "scriptFramework/orders/nxAlgoOrderParameters.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxRowFile.h"
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
    nxExpectRows("scripts/orders.txt", [this](const std::string& table) {
        const std::string line = Work(table == "EVERYTHING" ? Everything : table);
        EXPECT_TRUE(line.starts_with("32 P")) << line;
        return line.substr(4);
    });
}

TEST_F(nxAlgoOrderParametersTest, RefusesWhatItCanNotRead)
{
    nxExpectRows("scripts/orders.txt", [this](const std::string& table) { return Work(table); });
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
