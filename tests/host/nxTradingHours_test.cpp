#include "host/market/nxTradingHours.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/feed/nxFeedTime.h"

namespace {

constexpr long long Never = std::numeric_limits<long long>::max();

long long Time(const std::string& text)
{
    long long time = Never;
    if (!text.empty()) {
        EXPECT_EQ(nxFeedTime::SetFromText(text, time), nullptr) << text;
    }
    return time;
}

// 2024-01-08 is a Monday.
TEST(nxTradingHoursTest, OpensAndClosesAtItsSessions)
{
    const struct
    {
        const char* hours;
        const char* time;
        bool open;
        const char* change;  // the next one; empty: none
    } rows[] = {
        {"14:30-21:00", "20240108:14:29:59.999999999", false, "20240108:14:30:00"},
        {"14:30-21:00", "20240108:14:30:00", true, "20240108:21:00:00"},
        {"14:30-21:00", "20240108:21:00:00", false, "20240109:14:30:00"},
        {"00:00-24:00", "20240108", true, ""},
        {"09:00-09:00", "20240108:09:00", true, ""},
        {"Mon-Fri 08:00-12:00,Mon-Fri 13:00-16:30", "20240108:12:30", false, "20240108:13:00"},
        {"Mon-Fri 08:00-12:00, Mon-Fri 13:00-16:30", "20240112:17:00", false, "20240115:08:00"},
        {"Mon-Fri 08:00-12:00, Mon-Fri 12:00-16:30", "20240108:09:00", true, "20240108:16:30"},
        {"Sun-Thu 23:00-22:00", "20240108:22:30", false, "20240108:23:00"},
        {"Sun-Thu 23:00-22:00", "20240112:22:00", false, "20240114:23:00"},
        {"Wed 23:00-01:00", "20240111:00:30", true, "20240111:01:00"},  // over the end of the counted week
        {"Wed 23:00-01:00, Thu 00:30-02:00", "20240111:01:30", true, "20240111:02:00"},
        {"Mon 10:00-11:00", "19691229:10:30", true, "19691229:11:00"},  // before 1970
        {"Sat-Mon 00:00-24:00", "20240106:12:00", true, "20240109"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.hours) + " at " + row.time);
        nxTradingHours hours;
        ASSERT_EQ(nxTradingHours::SetFromText(row.hours, hours), nullptr);
        EXPECT_EQ(hours.IsOpen(Time(row.time)), row.open);
        EXPECT_EQ(hours.GetNextChange(Time(row.time)), Time(row.change));
    }
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
