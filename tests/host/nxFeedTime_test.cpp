#include "host/feed/nxFeedTime.h"

#include <gtest/gtest.h>

#include "tests/support/nxRowFile.h"

namespace {

// The nanoseconds, or why it is no time.
std::string Read(const std::string& text)
{
    long long time = 42;
    const char* const reason = nxFeedTime::SetFromText(text, time);
    EXPECT_TRUE(reason == nullptr || time == 42);
    return reason == nullptr ? std::to_string(time) : reason;
}

TEST(nxFeedTimeTest, ReadsEachFormToTheNanosecond)
{
    nxExpectRows("host/times.txt", Read);
    EXPECT_EQ(Read("9214646399999999999"), std::to_string(nxFeedTime::Latest));
    EXPECT_EQ(Read("16780101:00:00:00"), std::to_string(nxFeedTime::Earliest));
}

TEST(nxFeedTimeTest, RefusesWhatIsNoTimeAndSaysWhy)
{
    nxExpectRows("host/times.txt", Read);
}

TEST(nxFeedTimeTest, APeriodIsACountAndAUnit)
{
    nxExpectRows("host/times.txt", [](const std::string& text) {
        long long read = 0;
        const bool isPeriod = nxFeedTime::SetPeriodFromText(text, read);
        EXPECT_EQ(isPeriod, read != 0);
        return isPeriod ? std::to_string(read) : "no period";
    });
}

TEST(nxFeedTimeTest, WritesWhatItReads)
{
    for (const char* text : {"20240808:12:34:56.000000789", "19700101:00:00:00.000000000",
                             "19011213:20:45:52.999999999", "22611231:23:59:59.999999999"})
        EXPECT_EQ(nxFeedTime::GetAsString(std::stoll(Read(text))), text);
}

}  // namespace
