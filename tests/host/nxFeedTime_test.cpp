#include "host/feed/nxFeedTime.h"

#include <gtest/gtest.h>

namespace {

constexpr long long Second = 1'000'000'000;
constexpr long long Day = 86400 * Second;
constexpr long long August8 = 19943 * Day;  // 2024-08-08
constexpr const char* NotATime = "not a time";
constexpr const char* NoSuchDate = "no such calendar date";
constexpr const char* NoSuchTimeOfDay = "no such time of day";
constexpr const char* OutOfRange = "time out of range (1678 to 2261)";

TEST(nxFeedTimeTest, ReadsEachFormToTheNanosecond)
{
    const struct
    {
        const char* text;
        long long time;
    } rows[] = {
        {"20240808", August8},
        {"20240808:00:00", August8},
        {"2024-08-08", August8},
        {"2024-08-08 12:34:56", August8 + 45296 * Second},
        {"20240808:12:34:56.5", August8 + 45296 * Second + 500'000'000},
        {"20240808:12:34:56.123456789", August8 + 45296 * Second + 123'456'789},
        {"2024-08-08T12:34", August8 + 45240 * Second},
        {"2024-08-08T12:34:56.789Z", August8 + 45296 * Second + 789'000'000},
        {"2024-08-08T12:34:56+02:00", August8 + (45296 - 7200) * Second},
        {"2024-08-08T12:34:56-0530", August8 + (45296 + 19800) * Second},
        {"2024-08-08T01:00:00+02", August8 - 3600 * Second},
        {"19691231:23:59:59.999999999", -1},
        // Where one unit ends and the next begins.
        {"09999999", 9'999'999 * Second},
        {"100000000", 100'000'000 * Second},
        {"9214646399", 9'214'646'399 * Second},
        {"100000000000", 100'000'000 * Second},
        {"100000000000000", 100'000'000 * Second},
        {"9214646399999999", 9'214'646'399'999'999'000},
        {"100000000000000000", 100'000'000 * Second},
        {"9214646399999999999", nxFeedTime::Latest},
        {"16780101:00:00:00", nxFeedTime::Earliest},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        long long time = -2;
        EXPECT_EQ(nxFeedTime::SetFromText(row.text, time), nullptr);
        EXPECT_EQ(time, row.time);
    }
}

TEST(nxFeedTimeTest, RefusesWhatIsNoTimeAndSaysWhy)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", NotATime},
        {"1723075200.5", NotATime},
        {"20240808:12:34:5", NotATime},
        {"20240808:12:34:56.1234567890", NotATime},
        {"2024-8-8", NotATime},
        {"2024-08-08T12:34:56+2", NotATime},
        {"2024-08-08T12:34:56 UTC", NotATime},
        {"2024-08-08T12:34:56+24:00", NotATime},
        {"20230229:00:00", NoSuchDate},
        {"20240808:24:00:00", NoSuchTimeOfDay},
        {"2024-08-08T12:34:60Z", NoSuchTimeOfDay},
        {"9214646400", OutOfRange},
        {"18446744073709551616", OutOfRange},
        {"9214646400000000000", OutOfRange},
        {"22620101", OutOfRange},
        {"16771231:23:59:59.999999999", OutOfRange},
    };
    for (const auto& [text, reason] : rows) {
        SCOPED_TRACE(text);
        long long time = 42;
        EXPECT_STREQ(nxFeedTime::SetFromText(text, time), reason);
        EXPECT_EQ(time, 42);
    }
}

TEST(nxFeedTimeTest, APeriodIsACountAndAUnit)
{
    const std::pair<const char*, long long> rows[] = {
        {"30s", 30 * Second},
        {"1m", 60 * Second},
        {"4h", 14400 * Second},
        {"366d", 366 * Day},
        {"367d", 0},
        {"m", 0},
        {"1", 0},
        {"1min", 0},
        {"0m", 0},
        {"-1m", 0},
        {"1M", 0},
        {"99999999999999999999s", 0},
        {"", 0},
    };
    for (const auto& [text, period] : rows) {
        long long read = 0;
        EXPECT_EQ(nxFeedTime::SetPeriodFromText(text, read), period != 0) << text;
        EXPECT_EQ(read, period) << text;
    }
}

TEST(nxFeedTimeTest, WritesWhatItReads)
{
    for (const char* text : {"20240808:12:34:56.000000789", "19700101:00:00:00.000000000",
                             "19011213:20:45:52.999999999", "22611231:23:59:59.999999999"})
    {
        long long time = 0;
        EXPECT_EQ(nxFeedTime::SetFromText(text, time), nullptr);
        EXPECT_EQ(nxFeedTime::GetAsString(time), text);
    }
}

}  // namespace
