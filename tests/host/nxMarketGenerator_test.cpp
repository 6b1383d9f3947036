#include "host/synthetic/nxMarketGenerator.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "tests/host/nxFeedFixture.h"

namespace {

std::string Generate(const nxMarketGeneratorOptions& options,
                     nxMarketGeneratorStatistics* statistics = nullptr)
{
    nxMarketGenerator generator(options);
    std::string text;
    EXPECT_TRUE(generator.Generate([&text](std::string_view part) {
        text += part;
        return true;
    })) << generator.GetFailure();
    if (statistics != nullptr) *statistics = generator.GetStatistics();
    return text;
}

nxMarketGeneratorOptions MakeOptions(nxFeedKind kind, unsigned int seconds = 600)
{
    nxMarketGeneratorOptions options;
    options.kind = kind;
    options.durationSeconds = seconds;
    return options;
}

// FNV-1a.
unsigned long long Hash(const std::string& text)
{
    unsigned long long hash = 0xCBF29CE484222325;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return hash;
}

TEST(nxMarketGeneratorTest, TheSameSeedGivesTheSameBytesOnEveryMachine)
{
    // Pinned: another number here means that a recording generated earlier cannot be made again.
    EXPECT_EQ(Hash(Generate(MakeOptions(nxFeedKind::Quote))), 18410627651305112434u);
    EXPECT_EQ(Hash(Generate(MakeOptions(nxFeedKind::Depth))), 7628391218356636069u);
    nxMarketGeneratorOptions other = MakeOptions(nxFeedKind::Quote);
    other.seed = 2;
    EXPECT_NE(Generate(other), Generate(MakeOptions(nxFeedKind::Quote)));
}

TEST(nxMarketGeneratorTest, VolumesBalanceAndTheSideOfAMarketOrderIsEven)
{
    nxMarketGeneratorStatistics quotes;
    nxMarketGeneratorStatistics depth;
    Generate(MakeOptions(nxFeedKind::Quote, 1800), &quotes);
    Generate(MakeOptions(nxFeedKind::Depth, 1800), &depth);
    EXPECT_EQ(quotes.placed, quotes.traded + quotes.cancelled + quotes.resting);
    // What is written leaves the market alone.
    EXPECT_EQ(quotes.placed, depth.placed);
    EXPECT_EQ(quotes.trades, depth.trades);
    EXPECT_EQ(quotes.resting, depth.resting);
    // 94 market orders a side and minute, times 60, in 30 minutes; a few find nothing to take. Within five
    // deviations.
    EXPECT_NEAR(static_cast<double>(quotes.marketOrders), 2 * 0.94 * 60 * 30, 5 * 58);
    EXPECT_NEAR(static_cast<double>(quotes.limitOrders), 2 * 9.4 * 60 * 30, 5 * 184);
}

TEST(nxMarketGeneratorTest, TheDepthRebuildsTheQuotesAndTheBookIsNeverCrossed)
{
    // The quotes of the same market are the best levels of its depth, moment by moment.
    const nxFeedFile depthFile(Generate(MakeOptions(nxFeedKind::Depth)));
    const nxFeedFile quoteFile(Generate(MakeOptions(nxFeedKind::Quote)));
    nxFeed feed;
    ASSERT_TRUE(feed.Open({depthFile.GetPath(), quoteFile.GetPath()}));
    std::map<nxDecimal, unsigned int> sides[2];  // asks, bids
    nxDecimal bid, ask;
    nxVolume bidVolume, askVolume;
    unsigned int quotes = 0;
    unsigned long long traded = 0;
    while (const nxFeedEvent* event = feed.Next()) {
        for (const nxFeedLevel& level :
             event->kind == nxFeedKind::Depth ? event->levels : std::span<const nxFeedLevel>())
        {
            ASSERT_GT(level.price, nxDecimalZero);
            sides[level.side == nxSide::Buy ? 1 : 0][level.price] = level.volume.GetValue();
            if (level.volume.GetValue() == 0) sides[level.side == nxSide::Buy ? 1 : 0].erase(level.price);
        }
        if (event->kind == nxFeedKind::Depth) {
            ASSERT_FALSE(sides[0].empty() || sides[1].empty());
            ASSERT_LT(sides[1].rbegin()->first, sides[0].begin()->first);
            continue;
        }
        const nxFeedQuote& quote = event->quote;
        if (quote.IsTrade()) {
            // A buyer takes from the asks: at the best ask the quotes told, or above it.
            ASSERT_TRUE(quote.side == nxBuySell_Buy ? quote.last >= ask : quote.last <= bid);
            traded += quote.lastVolume.GetValue();
            continue;
        }
        if (quote.bid.IsValid()) bid = quote.bid;
        if (quote.ask.IsValid()) ask = quote.ask;
        if (quote.bidVolume.IsValid()) bidVolume = quote.bidVolume;
        if (quote.askVolume.IsValid()) askVolume = quote.askVolume;
        ASSERT_EQ(bid, sides[1].rbegin()->first);
        ASSERT_EQ(bidVolume.GetValue(), sides[1].rbegin()->second);
        ASSERT_EQ(ask, sides[0].begin()->first);
        ASSERT_EQ(askVolume.GetValue(), sides[0].begin()->second);
        ++quotes;
    }
    EXPECT_FALSE(feed.HasFailed()) << feed.GetError().GetText();
    EXPECT_GT(quotes, 1000u);
    nxMarketGeneratorStatistics statistics;
    Generate(MakeOptions(nxFeedKind::Quote), &statistics);
    EXPECT_EQ(traded, statistics.traded);
}

TEST(nxMarketGeneratorTest, ThePriceStaysPositiveAtTheFloor)
{
    nxMarketGeneratorOptions options = MakeOptions(nxFeedKind::Depth, 120);
    options.startPrice = nxDecimal::FromMantissa(20, 2);
    options.maxLots = 50;  // market orders that sweep many levels
    options.rateScale = 600;
    nxDecimal least = options.startPrice;
    for (options.seed = 1; options.seed <= 3; ++options.seed) {
        const nxFeedFile file(Generate(options));
        nxFeed feed;
        ASSERT_TRUE(feed.Open({file.GetPath()}));
        while (const nxFeedEvent* event = feed.Next()) {
            for (const nxFeedLevel& level : event->levels)
                least = std::min(least, level.price);
        }
        EXPECT_FALSE(feed.HasFailed()) << feed.GetError().GetText();
    }
    EXPECT_EQ(least, options.tickSize) << "the floor was never reached, so nothing was tried";
}

TEST(nxMarketGeneratorTest, OptionsThatCannotBeUsedAreTold)
{
    // The others can be given on the command line, which tests/apps/cases.txt does.
    nxMarketGeneratorOptions bars = MakeOptions(nxFeedKind::Bar);
    nxMarketGeneratorOptions timeless;
    timeless.start.SetNull();
    for (const auto& [options, failure] : {std::pair(bars, "bars cannot be generated; quotes and depth can"),
                                           std::pair(timeless, "the start lies outside 1970 to 2200")})
    {
        nxMarketGenerator generator(options);
        unsigned int calls = 0;
        EXPECT_FALSE(generator.Generate([&calls](std::string_view) { return ++calls != 0; }));
        EXPECT_EQ(generator.GetFailure(), failure);
        EXPECT_EQ(calls, 0u);
    }
}

TEST(nxMarketGeneratorTest, ASinkThatRefusesStopsIt)
{
    nxMarketGenerator generator(MakeOptions(nxFeedKind::Depth));
    unsigned int calls = 0;
    EXPECT_FALSE(generator.Generate([&calls](std::string_view) { return ++calls < 2; }));
    EXPECT_EQ(calls, 2u);
    EXPECT_EQ(generator.GetFailure(), "the output cannot be written");
}

TEST(nxExactRandomTest, IsExponentialWithMeanOneAndUniform)
{
    // Of 200,000 draws, within five deviations of the mean and of the probability to stay below 1 (1 - 1/e).
    nxExactRandom random(7);
    constexpr int Draws = 200'000;
    double sum = 0;
    int belowOne = 0;
    int counts[3] = {};
    for (int i = 0; i < Draws; ++i) {
        const double number = static_cast<double>(random.GetExponential()) / 4294967296.0;
        sum += number;
        belowOne += number < 1 ? 1 : 0;
        ++counts[random.GetBelow(3)];
    }
    EXPECT_NEAR(sum / Draws, 1.0, 5 * 0.00224);
    EXPECT_NEAR(static_cast<double>(belowOne) / Draws, 0.632121, 5 * 0.00108);
    for (const int count : counts)
        EXPECT_NEAR(static_cast<double>(count) / Draws, 1.0 / 3, 5 * 0.00106);
}

}  // namespace
