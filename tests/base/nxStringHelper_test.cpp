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
    const struct
    {
        double value;
        const char* text;
    } rows[] = {{0, "0"},
                {0.1, "0.1"},
                {100, "100"},
                {-1234567.25, "-1234567.25"},
                {1e14, "100000000000000"},
                {999999999999999, "999999999999999"},
                {1e15, "1e+15"},
                {0.00001, "0.00001"},
                {1e-10, "0.0000000001"},
                {1.0 / 3, "0.3333333333333333"}};
    for (const auto& row : rows)
        EXPECT_EQ(nxStringHelper::GetAsString(row.value), row.text);
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
    const struct
    {
        const char* text;
        char separator;
        unsigned error;
        double value;
    } rows[] = {{"1.5", '.', 0, 1.5},
                {"+1.5", '.', 0, 1.5},
                {"-1,5", ',', 0, -1.5},
                {"1e3", '.', 0, 1000},
                {"1.5E-1", '.', 0, 0.15},
                {"1.5", ',', nxError_NotANumber, 0},
                {"1,5", '.', nxError_NotANumber, 0},
                {"", '.', nxError_NotANumber, 0},
                {" 1", '.', nxError_NotANumber, 0},
                {"1 ", '.', nxError_NotANumber, 0},
                {"+-1", '.', nxError_NotANumber, 0},
                {"1e", '.', nxError_NotANumber, 0},
                {".", '.', nxError_NotANumber, 0},
                {"nan", '.', nxError_NotANumber, 0},
                {"inf", '.', nxError_NotANumber, 0},
                {"0x10", '.', nxError_NotANumber, 0},
                {"1.5.2", '.', nxError_NotANumber, 0},
                {"1e400", '.', nxError_NumberOutOfRange, 0},
                {"1e-400", '.', nxError_NumberOutOfRange, 0}};
    for (const auto& row : rows) {
        double value = 42;
        EXPECT_EQ(nxStringHelper::SetFromString(row.text, value, row.separator), row.error) << row.text;
        EXPECT_EQ(value, row.error == 0 ? row.value : 42) << row.text;
    }
}

// What each integer type makes of one text: 0, nxError_NotANumber or nxError_NumberOutOfRange.
TEST(nxStringHelper, ReadsIntegersAsAWhole)
{
    constexpr unsigned bad = nxError_NotANumber;
    constexpr unsigned range = nxError_NumberOutOfRange;
    const struct
    {
        const char* text;
        unsigned forInt, forUnsigned, forShort;
    } rows[] = {{"0", 0, 0, 0},
                {"65535", 0, 0, 0},
                {"65536", 0, 0, range},
                {"2147483647", 0, 0, range},
                {"2147483648", range, 0, range},
                {"4294967295", range, 0, range},
                {"4294967296", range, range, range},
                {"-2147483648", 0, bad, bad},
                {"-2147483649", range, bad, bad},
                {"+5", 0, bad, bad},
                {"-0", 0, bad, bad},
                {"+-5", bad, bad, bad},
                {"", bad, bad, bad},
                {"+", bad, bad, bad},
                {" 5", bad, bad, bad},
                {"5 ", bad, bad, bad},
                {"5.0", bad, bad, bad},
                {"1e3", bad, bad, bad},
                {"0x5", bad, bad, bad},
                {"99999999999x", bad, bad, bad}};
    for (const auto& row : rows) {
        int number = 42;
        unsigned int natural = 42;
        unsigned short small = 42;
        EXPECT_EQ(nxStringHelper::SetFromString(row.text, number), row.forInt) << row.text;
        EXPECT_EQ(nxStringHelper::SetFromString(row.text, natural), row.forUnsigned) << row.text;
        EXPECT_EQ(nxStringHelper::SetFromString(row.text, small), row.forShort) << row.text;
        const long long expected = std::atoll(row.text);
        EXPECT_EQ(number, row.forInt == 0 ? expected : 42) << row.text;
        EXPECT_EQ(natural, row.forUnsigned == 0 ? expected : 42) << row.text;
        EXPECT_EQ(small, row.forShort == 0 ? expected : 42) << row.text;
    }
}

TEST(nxStringParser, SplitsAtTheSeparator)
{
    using Parts = std::deque<std::string>;
    const struct
    {
        const char* text;
        Parts all, filled;
    } rows[] = {{"09:30", {"09", "30"}, {"09", "30"}},
                {"", {""}, {}},
                {":", {"", ""}, {}},
                {"a::b:", {"a", "", "b", ""}, {"a", "b"}},
                {"abc", {"abc"}, {"abc"}}};
    for (const auto& row : rows) {
        Parts parts = {"left over"};
        nxStringParser::ExtractAllSubstrings(row.text, parts, false, ':');
        EXPECT_EQ(parts, row.all) << row.text;
        nxStringParser::ExtractAllSubstrings(row.text, parts, true, ':');
        EXPECT_EQ(parts, row.filled) << row.text;
    }
}

}  // namespace
