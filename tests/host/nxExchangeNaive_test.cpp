// The exchange beside a naive one over random flows of sensible requests: everything that is told, every
// place in a queue and every stop price must agree. A failure prints the seed and the last steps.
// NX_SOAK_SECONDS in the environment: each test goes on with more seeds for that long.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <tuple>

#include "tests/host/nxExchangePair.h"

namespace {

using Data = nxExchangePair::Data;

nxExchangePair::Choose MakeChoose(unsigned long long seed)
{
    return [random = nxExactRandom(seed)](unsigned int limit) mutable {
        return static_cast<unsigned int>(random.GetBelow(limit));
    };
}

using Setup = std::tuple<const char*, Data, const char*>;

class nxExchangeNaive : public testing::TestWithParam<Setup>
{
};

constexpr int Steps = 200;
constexpr unsigned long long Seeds = 250;

TEST_P(nxExchangeNaive, TellsTheSame)
{
    using Clock = std::chrono::steady_clock;
    const char* const soak = std::getenv("NX_SOAK_SECONDS");
    const Clock::time_point end = Clock::now() + std::chrono::seconds(soak != nullptr ? std::atoi(soak) : 0);
    const auto& [name, data, model] = GetParam();
    std::size_t fills = 0, orders = 0;
    for (unsigned long long seed = 1; seed <= Seeds || Clock::now() < end; ++seed) {
        nxExchangePair pair(data, model, MakeChoose(seed), false);
        if (const int step = pair.Run(Steps); step < Steps) {
            nxExchangePair again(data, model, MakeChoose(seed), true);
            again.Run(Steps);
            FAIL() << "seed " << seed << ", step " << step << again.GetReport();
        }
        fills += pair.fills;
        orders += pair.orders;
    }
    RecordProperty("orders", static_cast<int>(orders));
    EXPECT_GT(orders, 15000u);
    EXPECT_GT(fills, 9000u);
}

constexpr Setup Setups[] = {
    {"QuotesTouch", Data::Quotes, "touch"},
    {"QuotesCross", Data::Quotes, "cross"},
    {"QuotesQueue", Data::Quotes, "queue"},
    {"DepthTouch", Data::Depth, "touch"},
    {"DepthCross", Data::Depth, "cross"},
    {"DepthQueue", Data::Depth, "queue"},
    {"BothTouch", Data::Both, "touch"},
    {"BothCross", Data::Both, "cross"},
    {"BothQueue", Data::Both, "queue"},
    {"MinuteBars", Data::MinuteBars, "queue"},
    {"BarsOfUnknownPeriod", Data::UnknownBars, "queue"},
    {"DailyBars", Data::DailyBars, "queue"},
};
INSTANTIATE_TEST_SUITE_P(All, nxExchangeNaive, testing::ValuesIn(Setups),
                         [](const auto& setup) { return std::get<0>(setup.param); });

}  // namespace
