#include "host/market/nxMarketProduct.h"

#include <gtest/gtest.h>

#include "tests/host/nxExchangeFixture.h"

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
}

TEST_F(nxMarketProductTest, QuotesFromDepthTellTheBestLevelsAsTheyChange)
{
    const struct
    {
        const char* name;
        std::vector<nxFeedLevel> levels;
        bool changed;
        const char* snapshot;
        const char* update;
    } rows[] = {
        {"one side", {{Dec("99"), 5u, nxSide::Buy}}, true, "99 x 5 / - x -", "99 x 5 / = x ="},
        {"a worse level", {{Dec("98"), 1u, nxSide::Buy}}, false, "99 x 5 / - x -", "= x = / = x ="},
        {"other side", {{Dec("101"), 7u, nxSide::Sell}}, true, "99 x 5 / 101 x 7", "= x = / 101 x 7"},
        {"volume only", {{Dec("99"), 6u, nxSide::Buy}}, true, "99 x 6 / 101 x 7", "= x 6 / = x ="},
        {"better, same volume",
         {{Dec("100"), 6u, nxSide::Buy}},
         true,
         "100 x 6 / 101 x 7",
         "100 x = / = x ="},
        {"best goes",
         {{Dec("100"), 0u, nxSide::Buy}, {Dec("99"), 0u, nxSide::Buy}},
         true,
         "98 x 1 / 101 x 7",
         "98 x 1 / = x ="},
        {"there and back within one change",
         {{Dec("101"), 0u, nxSide::Sell}, {Dec("101"), 7u, nxSide::Sell}},
         false,
         "98 x 1 / 101 x 7",
         "= x = / = x ="},
        {"side runs empty", {{Dec("98"), 0u, nxSide::Buy}}, true, "- x - / 101 x 7", "- x - / = x ="},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        product.ApplyDepth(row.levels);
        EXPECT_EQ(product.QuoteFromDepth(), row.changed);
        EXPECT_EQ(ShowBest(product.GetPrice()), row.snapshot);
        EXPECT_EQ(ShowBest(product.GetPriceUpdate()), row.update);
    }
}
