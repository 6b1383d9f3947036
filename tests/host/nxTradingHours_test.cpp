#include "host/market/nxTradingHours.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/feed/nxFeedTime.h"
#include "tests/support/nxRowFile.h"

namespace {

constexpr long long Never = std::numeric_limits<long long>::max();

long long Time(const std::string& text)
{
    long long time = Never;
    EXPECT_EQ(nxFeedTime::SetFromText(text, time), nullptr) << text;
    return time;
}

TEST(nxTradingHoursTest, OpensAndClosesAtItsSessions)
{
    nxExpectRows("host/hours.txt", [](const std::string& row) {
        const std::size_t at = row.find(" at ");
        nxTradingHours hours;
        EXPECT_EQ(nxTradingHours::SetFromText(row.substr(0, at), hours), nullptr);
        const long long time = Time(row.substr(at + 4));
        const long long change = hours.GetNextChange(time);
        return std::string(hours.IsOpen(time) ? "open" : "closed") +
               (change == Never ? "" : " until " + nxFeedTime::GetAsString(change).substr(0, 17));
    });
}

TEST(nxTradingHoursTest, WalksThroughAWeekAsItsStateChanges)
{
    for (const char* text : {"14:30-21:00", "Sun-Thu 23:00-22:00", "Fri 18:00-03:00, Mon-Wed 09:30-10:00",
                             "Wed 22:00-12:00, Thu 11:00-13:00, Thu 13:00-14:00"})
    {
        SCOPED_TRACE(text);
        nxTradingHours hours;
        ASSERT_EQ(nxTradingHours::SetFromText(text, hours), nullptr);
        constexpr long long minute = 60'000'000'000;
        long long time = Time("20240101");
        long long change = hours.GetNextChange(time);
        bool open = hours.IsOpen(time);
        for (int i = 1; i <= 14 * 1440; ++i) {
            time += minute;
            EXPECT_EQ(hours.IsOpen(time) != open, time == change) << nxFeedTime::GetAsString(time);
            if (time < change) continue;
            open = !open;
            change = hours.GetNextChange(time);
        }
    }
}

TEST(nxTradingHoursTest, RefusesWhatIsNoSession)
{
    for (const char* text :
         {"", "9:30-16:00", "09:30", "09:30-25:00", "24:00-24:00", "09:60-10:00", "Mo 09:30-16:00",
          "Mon-Fry 09:30-16:00", "Mon 09:30-16:00,", "09:30-16:00 UTC", "09:30-24:01", "Mon,Tue 09:30-10:00"})
    {
        nxTradingHours hours;
        EXPECT_NE(nxTradingHours::SetFromText(text, hours), nullptr) << text;
        EXPECT_TRUE(hours.IsEmpty());
    }
}

}  // namespace
