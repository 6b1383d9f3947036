#include <gmock/gmock.h>

#include <regex>

#include "host/market/nxProductFile.h"
#include "tests/host/nxFeedFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

std::string GetError(const std::string& content)
{
    const nxFeedFile file(content);
    std::vector<nxProductDescription> products;
    nxFeedError error;
    const bool isRead = nxProductFile::Read(file.GetPath(), products, error);
    EXPECT_TRUE(isRead || products.empty());
    return isRead ? "" : file.Hide(error.GetText());
}

std::vector<nxProductDescription> Read(const std::string& path)
{
    std::vector<nxProductDescription> products;
    nxFeedError error;
    EXPECT_TRUE(nxProductFile::Read(path, products, error)) << error.GetText();
    return products;
}

TEST(nxFeedProductFileTest, ReadsAllThatAProductMayHave)
{
    const auto products = Read(NX_TEST_DIR "/data/host/all_keys.toml");
    ASSERT_EQ(products.size(), 4u);
    const nxProductDescription& future = products[0];
    EXPECT_EQ(future.name, "ESZ3");
    EXPECT_EQ(future.tickSize.GetAsString(), "0.25");
    EXPECT_EQ(future.lotSize.GetAsString(), "1");
    EXPECT_EQ(future.pointValue.GetAsString(), "50.00");
    EXPECT_EQ(future.currency.GetAsString(), "USD");
    EXPECT_EQ(future.exchange, "CME");
    EXPECT_EQ(future.description, "E-mini");
    EXPECT_FALSE(future.tradingHours.IsEmpty());
    EXPECT_EQ(future.makerFee.GetAsString(), "-0.01");
    EXPECT_EQ(future.takerFee.GetAsString(), "0.25");
    EXPECT_FALSE(future.IsStrategy());

    const nxProductDescription& spread = products[1];
    EXPECT_TRUE(spread.tickSize.IsNull());
    EXPECT_TRUE(spread.currency.IsUndefined());
    ASSERT_EQ(spread.legs.size(), 2u);
    EXPECT_EQ(spread.legs[0].side, nxSide::Buy);
    EXPECT_EQ(spread.legs[0].priceRatio.GetAsString(), "1");
    EXPECT_EQ(spread.legs[1].product, "ESH4");
    EXPECT_EQ(spread.legs[1].side, nxSide::Sell);
    EXPECT_EQ(spread.legs[1].priceRatio.GetAsString(), "0.5");
    EXPECT_EQ(spread.legs[1].tradeRatio.GetAsString(), "2");
    EXPECT_EQ(spread.priceOffset.GetAsString(), "-0.5");
    EXPECT_EQ(products[3].legs[0].product, "ESZ3-ESH4");
}

TEST(nxFeedProductFileTest, FloatsCountAsTheirShortestText)
{
    for (const auto& [number, expected] : {std::pair("0.01", "0.01"),
                                           {"0.1", "0.1"},
                                           {"0.005", "0.005"},
                                           {"0.00000001", "0.00000001"},
                                           {"1e-3", "0.001"},
                                           {"\"0.010\"", "0.010"},
                                           {"5.0", "5"}})
    {
        const nxFeedFile file(std::string("[[product]]\nname = \"A\"\ntickSize = ") + number + "\n");
        EXPECT_EQ(Read(file.GetPath()).at(0).tickSize.GetAsString(), expected);
    }
}

TEST(nxFeedProductFileTest, WhatIsWrongIsToldByPlaceAndReason)
{
    nxExpectRows("host/products.txt", [](const std::string& text) {
        static const std::regex name("^([A-C])$", std::regex::multiline);
        return GetError(std::regex_replace(text, name, "[[product]]\nname = \"$1\"") + "\n");
    });
    EXPECT_EQ(GetError(""), "");
    EXPECT_EQ(GetError("\xef\xbb\xbf[[product]]\r\nname = 5\r\n"), "FILE:2:8: name is not a text in quotes");
    EXPECT_EQ(GetError("name = \n"), R"(FILE:1:8: key-value pair: expected value, saw '\n')");
    EXPECT_THAT(GetError("name = \"\xff\""), testing::StartsWith("FILE:1:"));
    EXPECT_THAT(GetError("a = " + std::string(100'000, '[')),
                testing::StartsWith("FILE:1:261: value: exceeded"));
}

}  // namespace
