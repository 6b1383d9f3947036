#include "base/values/nxStringHelper.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>

#include "base/values/nxStringParser.h"

namespace {

TEST(nxStringHelper, WritesDoublesShortAndInFull)
{
    const std::pair<double, const char*> rows[] = {{0.1, "0.1"},
                                                   {999999999999999, "999999999999999"},
                                                   {1e15, "1e+15"},
                                                   {1e-10, "0.0000000001"},
                                                   {1.0 / 3, "0.3333333333333333"}};
    for (const auto& [value, text] : rows)
        EXPECT_EQ(nxStringHelper::GetAsString(value), text);
    EXPECT_EQ(nxStringHelper::GetAsString(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(nxStringHelper::GetAsString(4294967295u), "4294967295");
}

TEST(nxStringHelper, DoublesGoThereAndBack)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const double value = std::bit_cast<double>(std::uint64_t{random()});
        if (!std::isnormal(value)) continue;
        const std::string text = nxStringHelper::GetAsString(value);
        double read = 0;
        ASSERT_TRUE(nxStringHelper::SetFromString(text, read, '.').IsSuccess()) << text;
        ASSERT_EQ(read, value) << text;
        ASSERT_TRUE(std::abs(value) >= 1e15 || text.find('e') == std::string::npos) << text;
    }
}

TEST(nxStringHelper, ReadsDoublesAsAWhole)
{
    const std::tuple<const char*, char, unsigned, double> rows[] = {
        {"+1.5", '.', 0, 1.5},
        {"-1,5", ',', 0, -1.5},
        {"1.5E-1", '.', 0, 0.15},
        {"1.5", ',', nxError_NotANumber, 0},
        {" 1", '.', nxError_NotANumber, 0},
        {"nan", '.', nxError_NotANumber, 0},
        {"0x10", '.', nxError_NotANumber, 0},
        {"1e400", '.', nxError_NumberOutOfRange, 0}};
    for (const auto& [text, separator, error, given] : rows) {
        double value = 42;
        EXPECT_EQ(nxStringHelper::SetFromString(text, value, separator), error) << text;
        EXPECT_EQ(value, error == 0 ? given : 42) << text;
    }
}

// What each integer type makes of one text: 0, nxError_NotANumber or nxError_NumberOutOfRange.
TEST(nxStringHelper, ReadsIntegersAsAWhole)
{
    constexpr unsigned bad = nxError_NotANumber;
    constexpr unsigned range = nxError_NumberOutOfRange;
    const std::tuple<const char*, unsigned, unsigned, unsigned> rows[] = {{"65536", 0, 0, range},
                                                                          {"2147483648", range, 0, range},
                                                                          {"4294967296", range, range, range},
                                                                          {"-2147483649", range, bad, bad},
                                                                          {"+5", 0, bad, bad},
                                                                          {"+-5", bad, bad, bad},
                                                                          {"", bad, bad, bad},
                                                                          {"5 ", bad, bad, bad},
                                                                          {"0x5", bad, bad, bad},
                                                                          {"99999999999x", bad, bad, bad}};
    for (const auto& [text, forInt, forUnsigned, forShort] : rows) {
        int number = 42;
        unsigned int natural = 42;
        unsigned short small = 42;
        EXPECT_EQ(nxStringHelper::SetFromString(text, number), forInt) << text;
        EXPECT_EQ(nxStringHelper::SetFromString(text, natural), forUnsigned) << text;
        EXPECT_EQ(nxStringHelper::SetFromString(text, small), forShort) << text;
        const long long expected = std::atoll(text);
        EXPECT_EQ(number, forInt == 0 ? expected : 42) << text;
        EXPECT_EQ(natural, forUnsigned == 0 ? expected : 42) << text;
        EXPECT_EQ(small, forShort == 0 ? expected : 42) << text;
    }
}

TEST(nxStringParser, SplitsAtTheSeparator)
{
    using Parts = std::deque<std::string>;
    const std::tuple<const char*, Parts, Parts> rows[] = {
        {"", {""}, {}}, {":", {"", ""}, {}}, {"a::b:", {"a", "", "b", ""}, {"a", "b"}}};
    for (const auto& [text, all, filled] : rows) {
        Parts parts = {"left over"};
        nxStringParser::ExtractAllSubstrings(text, parts, false, ':');
        EXPECT_EQ(parts, all) << text;
        nxStringParser::ExtractAllSubstrings(text, parts, true, ':');
        EXPECT_EQ(parts, filled) << text;
    }
}

}  // namespace
