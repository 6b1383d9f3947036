#include "host/report/nxResultDocument.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "host/report/nxResultPage.h"

namespace {

constexpr long long Start = 1'700'000'000'123'456'789;

nxPriceBucket MakePrice(long long number)
{
    const double price = 12345.67 + static_cast<double>(number % 1000) / 100;
    return {Start + number * 1'234'567, price - 1.25, price + 1.25, price};
}

nxResultOrder MakeOrder(unsigned int number, const std::string& product)
{
    nxResultOrder order;
    order.job = "market_maker";
    order.product = product;
    order.side = "BUY";
    order.type = "LIMIT";
    order.status = "FILLED";
    order.order = number;
    for (int i = 0; i < 10; ++i)
        order.events.push_back({Start + i, i == 9 ? "filled" : "amended", "5 at 12345.67"});
    return order;
}

// Every list as full as a run leaves it.
nxResult MakeResult(unsigned int products, unsigned int lines)
{
    nxResult result;
    result.jobs.emplace_back().name = "market_maker";
    for (unsigned int i = 0; i < products; ++i) {
        nxResultProduct& product = result.products.emplace_back();
        product.name = "P" + std::to_string(i);
        for (long long j = 0; j < 8192; ++j)
            product.prices.Add(MakePrice(j));
        product.fillCount = 20'000;
        product.fills.resize(20'000, {Start, "market_maker", "BUY", 12345.67, 5, false, 123456});
    }
    for (unsigned int i = 0; i < lines; ++i)
        for (long long j = 0; j < 4096; ++j)
            (j == 0 ? result.lines.emplace_back() : result.lines.back()).values.Add(MakePrice(j));
    for (unsigned int i = 0; i < 10'000; ++i)
        result.orders.push_back(MakeOrder(i + 1, "P" + std::to_string(i % products)));
    for (const auto job : {std::optional(0u), std::optional<unsigned int>()}) {
        nxResultData& data = result.results.emplace_back();
        data.job = job;
        data.orders = 10'000;
        const nxRoundTrip trip{0,
                               nxSide::Buy,
                               5,
                               Start,
                               Start + 1'234'567,
                               12345.67,
                               12346.67,
                               nxExactAmount::FromText("-123.45"),
                               {},
                               nxExactAmount::FromText("123.45"),
                               nxExactAmount::FromText("12.34"),
                               true,
                               123456,
                               123457};
        for (int i = 0; i < 10'000; ++i)
            data.trips.Add(trip);
        for (long long j = 0; j < 8192; ++j)
            data.equity.Add({MakePrice(j), 1234.5, 61728.35});
    }
    return result;
}

// Also those whose amounts or volume are too large to be packed.
TEST(nxRoundTrips, GivesBackWhatWasAdded)
{
    nxRoundTrip small;
    small.profit = nxExactAmount::FromText("-0.0000000001");
    small.side = nxSide::Sell;
    small.exitTime = 3;
    nxRoundTrip large = small;
    large.mfe = nxExactAmount::FromText("123456789012345678901234.5");
    large.exitTime = 2;
    nxRoundTrip wide = small;
    wide.volume = 1ull << 32;
    wide.exitTime = 1;
    nxRoundTrips trips;
    for (const nxRoundTrip& trip : {small, large, wide})
        trips.Add(trip);
    trips.SortByExit();
    ASSERT_EQ(trips.GetCount(), 3u);
    EXPECT_EQ(trips[0].volume, 1ull << 32);
    EXPECT_EQ(trips[1].mfe.GetAsText(), "123456789012345678901234.5");
    EXPECT_EQ(trips[2].profit.GetAsText(), "-0.0000000001");
    EXPECT_EQ(trips[2].side, nxSide::Sell);
}

}  // namespace

TEST(nxResultDocument, ItsPageStaysSmallAndTheListsOfAKindAreEquallyLong)
{
    for (const auto& [products, lines] : {std::pair(60u, 60u), std::pair(1u, 0u)}) {
        std::ostringstream document, page;
        nxResultDocument::Write(document, MakeResult(products, lines));
        nxResultPage::Write(page, {{"", document.str(), ""}});
        EXPECT_LT(page.view().size(), 8u << 20) << products << " products, " << lines << " lines";
        const nlohmann::json json = nlohmann::json::parse(document.view());
        const auto getPoints = [](const nlohmann::json& series) { return series["ms"].size(); };
        const std::size_t points = getPoints(json["results"][0]["equity"]);
        EXPECT_EQ(points > 8000, lines == 0);
        EXPECT_GT(points, 200u);
        for (const nlohmann::json& product : json["products"]) {
            EXPECT_EQ(getPoints(product["prices"]), points);
            EXPECT_EQ(product["fills"]["rows"].size(), 20'000 / products);
        }
        for (const nlohmann::json& line : json["lines"])
            EXPECT_NEAR(static_cast<double>(getPoints(line)), static_cast<double>(points), 2.0);
        const nlohmann::json& orders = json["results"][1]["orders"]["rows"];
        EXPECT_EQ(orders.size(), 5'000u);
        EXPECT_EQ(orders.back()[0], 10'000);
        EXPECT_EQ(orders.back()[13].back()[1], "filled");
    }
}
