#include "host/market/nxMarketProduct.h"

#include <gtest/gtest.h>

#include "tests/host/nxExchangeFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

constexpr long long Day = 86'400'000'000'000;

nxFeedQuote Trade(const char* last, const nxVolume& volume)
{
    nxFeedQuote quote = MakeNoQuote();
    quote.last = Dec(last);
    quote.lastVolume = volume;
    return quote;
}

std::string Show(const nxDecimal& price)
{
    return price.IsNoChange() ? "=" : price.IsNull() ? "-" : price.GetAsString();
}

std::string Show(const nxVolume& volume)
{
    return volume.IsNoChange() ? "=" : volume.IsNull() ? "-" : std::to_string(volume.GetValue());
}

// "bid x volume / ask x volume"
std::string ShowBest(const nxPrice& price)
{
    return Show(price.GetBidPrice()) + " x " + Show(price.GetBidVolume()) + " / " +
           Show(price.GetAskPrice()) + " x " + Show(price.GetAskVolume());
}

// "open high low close previousClose total"
std::string ShowDay(const nxPrice& price)
{
    std::string text;
    for (const nxDecimal& value : {price.GetOpenPrice(), price.GetHighPrice(), price.GetLowPrice(),
                                   price.GetClosePrice(), price.GetPreviousClosePrice()})
        text += Show(value) + " ";
    return text + Show(price.GetTotalTradedVolume());
}

class nxMarketProductTest : public ::testing::Test
{
protected:
    nxMarketProduct product{"A"};
};

}  // namespace

TEST_F(nxMarketProductTest, ADayBeginsAtMidnightUtcBefore1970Too)
{
    product.ApplyQuote(Trade("100", 2u), -1);
    EXPECT_EQ(ShowDay(product.GetPrice()), "100 100 100 100 - 2");
    product.ApplyQuote(Trade("101", 3u), -Day);
    EXPECT_EQ(ShowDay(product.GetPrice()), "100 101 100 101 - 5") << "the first moment of that day";
    product.ApplyQuote(Trade("102", 1u), 0);
    EXPECT_EQ(ShowDay(product.GetPrice()), "102 102 102 102 101 1");
    nxPriceTradeVolumes update;
    EXPECT_TRUE(product.GetTradeVolumesUpdate(update));
    product.ApplyDepth({});
    EXPECT_FALSE(product.GetTradeVolumesUpdate(update)) << "the book tells of no trade";
}

TEST_F(nxMarketProductTest, TheVolumeOfADayStopsAtTheLargestAndNeverBecomesAMark)
{
    constexpr unsigned int largest = 0xFFFFFFFD;
    product.ApplyQuote(Trade("100", largest - 1), 0);
    product.ApplyQuote(Trade("100", 7u), 1);
    EXPECT_EQ(product.GetPrice().GetTotalTradedVolume().GetValue(), largest);
    EXPECT_EQ(ShowDay(product.GetPriceUpdate()), "= = = 100 = 4294967293")
        << "an equal high or low is no news";
}

// Whatever came before it.
TEST_F(nxMarketProductTest, AnUpdateTellsWhatItsEventChangedAndNothingElse)
{
    const auto showUpdate = [this] {
        return ShowBest(product.GetPriceUpdate()) + " | " + ShowDay(product.GetPriceUpdate());
    };
    const auto quote = [&](const char* bid, const char* ask) {
        nxFeedQuote row = MakeNoQuote();
        if (*bid != '\0') row.bid = Dec(bid);
        if (*ask != '\0') row.ask = Dec(ask);
        product.ApplyQuote(row, Day);
        return showUpdate();
    };
    const auto bar = [&](long long time) {
        product.ApplyBar({Dec("5"), Dec("7"), Dec("4"), Dec("6"), nxVolume(3)}, time);
        return showUpdate();
    };
    for (int round = 0; round < 2; ++round) {
        const std::string tick = round == 0 ? "" : "0";  // another one than in the round before
        EXPECT_EQ(bar(2 * round * Day),
                  std::string("= x = / = x = | 5 7 4 6 ") + (round == 0 ? "- 3" : "6 3"));
        EXPECT_EQ(bar(2 * round * Day + 1), "= x = / = x = | 5 7 4 6 = 6");
        EXPECT_EQ(quote(("1" + tick).c_str(), ""), "1" + tick + " x = / = x = | = = = = = =");
        EXPECT_EQ(quote("", ("9" + tick).c_str()), "= x = / 9" + tick + " x = | = = = = = =");
        product.ApplyQuote(Trade("5", 1u), 2 * round * Day + 2);
        EXPECT_EQ(showUpdate(), "= x = / = x = | = = = 5 = 7");
        EXPECT_EQ(quote("", ("8" + tick).c_str()), "= x = / 8" + tick + " x = | = = = = = =");
        EXPECT_EQ(bar(2 * round * Day + 3), "= x = / = x = | 5 7 4 6 = 10");
        product.ApplyDepth({});
        EXPECT_EQ(product.QuoteFromDepth(), true);
        EXPECT_EQ(showUpdate(), "- x = / - x = | = = = = = =");
    }
}

TEST_F(nxMarketProductTest, QuotesFromDepthTellTheBestLevelsAsTheyChange)
{
    nxExpectRows("host/quotes.txt", [this](const std::string& row) {
        const auto words = nxGetWords(row);
        std::vector<nxFeedLevel> levels;
        for (std::size_t i = 0; i + 2 < words.size(); i += 3)
            levels.push_back({Dec(words[i + 1].c_str()), static_cast<unsigned int>(std::stoul(words[i + 2])),
                              words[i] == "BUY" ? nxSide::Buy : nxSide::Sell});
        product.ApplyDepth(levels);
        const std::string changed = product.QuoteFromDepth() ? "changed: " : "not changed: ";
        return changed + ShowBest(product.GetPrice()) + ", " + ShowBest(product.GetPriceUpdate());
    });
}
