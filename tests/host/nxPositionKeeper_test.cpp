#include "host/accounts/nxPositionKeeper.h"

#include <gtest/gtest.h>

#include "host/accounts/nxFeeSchedule.h"
#include "tests/host/nxExchangeFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

std::string Text(const nxExactAmount& amount)
{
    nxDecimal number = amount.GetAsDecimal();
    number.Normalise(0);
    return number.GetAsString();
}

TEST(nxPositionKeeper, ValuesFillsByTheMethodOfAverages)
{
    nxExpectRows("host/positions.txt", [](const std::string& row) {
        nxPositionKeeper keeper(Dec("10"));
        const auto words = nxGetWords(row);
        for (auto word = words.begin(); *word != "marked"; ++word) {
            const int volume = std::stoi(*word);
            keeper.AddFill(volume > 0 ? nxSide::Buy : nxSide::Sell,
                           Dec(word->substr(word->find('@') + 1).c_str()),
                           static_cast<unsigned int>(std::abs(volume)), {Dec("0.5"), 1});
        }
        const nxDecimal mark = words.back() == "nothing" ? nxDecimal() : Dec(words.back().c_str());
        const nxDecimal average = keeper.GetOpenAveragePrice();
        return "net " + std::to_string(keeper.GetNet()) + ", average " +
               (average.IsNull() ? "none" : average.GetAsString()) + ", total " +
               Text(keeper.GetTotalProfit(mark)) + ", open " + Text(keeper.GetOpenProfit(mark)) +
               ", realised " + Text(keeper.GetRealisedProfit(mark));
    });
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
    nxExpectRows("host/positions.txt", [](const std::string& row) {
        const auto words = nxGetWords(row);
        nxFeeSchedule fees;
        fees.maker = Dec(words[0].c_str());
        fees.taker = Dec(words[1].c_str());
        fees.isRate = words[2] == "rate";
        return Text(fees.GetFee(words[3] == "maker", Dec(words[4].c_str()), 3, Dec("50")));
    });
    EXPECT_EQ(Text(nxFeeSchedule().GetFee(true, Dec("101.5"), 3, Dec("50"))), "0");
}

}  // namespace
