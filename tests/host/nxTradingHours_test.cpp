#include "host/market/nxTradingHours.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "host/feed/nxFeedTime.h"
#include "host/market/nxProductFile.h"
#include "tests/host/nxFeedFixture.h"
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
                             "Wed 22:00-12:00, Thu 12:30-13:00, Thu 13:30-14:00"})
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

// The changes from a time on, as "+0108:14:30" where the market opens, "-" where it closes, "=" where it does
// both.
std::string GetChanges(const nxTradingHours& hours, long long time, int count)
{
    std::string changes;
    for (; count > 0 && hours.GetNextChange(time) != Never; --count) {
        const long long last = time;
        time = hours.GetNextChange(time);
        EXPECT_EQ(hours.GetLastChange(time), time);
        EXPECT_LE(hours.GetLastChange(time - 1), last);
        const bool isOpen = hours.IsOpen(time);
        changes += hours.IsOpen(time - 1) == isOpen ? "=" : isOpen ? "+" : "-";
        changes += nxFeedTime::GetAsString(time).substr(4, 10) + " ";
    }
    return changes + (count > 0 ? "never" : "");
}

nxTradingHours Read(const std::string& keys)
{
    const nxFeedFile file("[[product]]\nname = 'A'\n" + keys + "\n");
    std::vector<nxProductDescription> products(1);
    nxFeedError error;
    EXPECT_TRUE(nxProductFile::Read(file.GetPath(), products, error)) << error.GetText();
    return products.back().tradingHours;
}

// In New York clocks went from 2:00 to 3:00 on 10 March 2024, and from 2:00 back to 1:00 on 3 November.
TEST(nxTradingHoursTest, FollowsAZoneHolidaysAndShortDays)
{
    const std::string newYork = "zone = 'America/New_York'\n";
    const struct
    {
        std::string keys;
        const char* from;
        const char* changes;
    } rows[] = {
        {newYork + "tradingHours = 'Mon-Fri 09:30-16:00'", "20240308",
         "+0308:14:30 -0308:21:00 +0311:13:30 "},
        {newYork + "tradingHours = 'Mon-Fri 09:30-16:00'", "20241101",
         "+1101:13:30 -1101:20:00 +1104:14:30 "},
        {newYork + "tradingHours = 'Sat 20:00-04:00'", "20240309", "+0310:01:00 -0310:08:00 +0317:00:00 "},
        {newYork + "tradingHours = 'Sat 20:00-04:00'", "20241102", "+1103:00:00 -1103:09:00 +1110:01:00 "},
        // A time that there is not, and a session without any other.
        {newYork + "tradingHours = 'Sun 02:30-05:00'", "20240305", "+0310:07:00 -0310:09:00 +0317:06:30 "},
        {newYork + "tradingHours = 'Sun 02:15-02:45'", "20240303", "+0303:07:15 -0303:07:45 +0317:06:15 "},
        // A time that there is twice.
        {newYork + "tradingHours = 'Sun 00:30-01:30, Sun 01:30-03:00'", "20241103",
         "+1103:04:30 =1103:05:30 -1103:08:00 "},
        {newYork + "tradingHours = 'Sun 01:15-01:45'", "20241103:06:20", "+1110:06:15 "},
        {"zone = 'Asia/Tokyo'\ntradingHours = 'Mon 00:00-24:00'", "20240106", "+0107:15:00 -0108:15:00 "},
        // Sessions over midnight belong to the day of their end.
        {"zone = 'America/Chicago'\ntradingHours = 'Sun-Thu 17:00-16:00'\nholidays = [2024-12-25]\n"
         "shortDays = [{ date = 2024-12-24, close = '12:15' }]",
         "20241223:12:00", "-1223:22:00 +1223:23:00 -1224:18:15 +1225:23:00 -1226:22:00 "},
        {"tradingHours = '09:00-12:00, 13:00-17:00'\nholidays = ['2024-01-07', '2024-01-10']\n"
         "shortDays = [{ date = '2024-01-08', close = '12:30' }]",
         "20240106:16:00",
         "-0106:17:00 +0108:09:00 -0108:12:00 +0109:09:00 -0109:12:00 +0109:13:00 -0109:17:00 "
         "+0111:09:00 "},
        {"tradingHours = 'Mon 10:00-11:00'\nholidays = [2024-01-15, 2024-01-22, 2024-01-08]", "20240106",
         "+0129:10:00 -0129:11:00 +0205:10:00 "},
        {"tradingHours = 'Mon-Fri 09:00-17:00, Mon-Fri 17:00-23:00'", "20240108",
         "+0108:09:00 =0108:17:00 -0108:23:00 +0109:09:00 "},
        {"tradingHours = 'Sun-Tue 22:00-22:00'", "20240107",
         "+0107:22:00 =0108:22:00 =0109:22:00 -0110:22:00 "},
        {"tradingHours = '00:00-24:00'\nholidays = [2024-12-25]", "20240101",
         "-1225:00:00 +1226:00:00 never"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.keys);
        const nxTradingHours hours = Read(row.keys);
        const std::string expected = row.changes;
        const auto count = std::ranges::count(expected, ' ');
        const bool isEnd = expected.ends_with("never");
        EXPECT_EQ(GetChanges(hours, Time(row.from), static_cast<int>(count + isEnd)), expected);
    }
}

// So a watched file is refused when one of them changes.
TEST(nxTradingHoursTest, DifferByAllThatTheirCalendarTells)
{
    const std::string keys[] = {"", "zone = 'Asia/Tokyo'", "holidays = [2024-01-08]",
                                "shortDays = [{ date = 2024-01-08, close = '12:00' }]"};
    for (const std::string& one : keys)
        for (const std::string& other : keys)
            EXPECT_EQ(Read("tradingHours = '09:00-17:00'\n" + one) ==
                          Read("tradingHours = '09:00-17:00'\n" + other),
                      one == other)
                << one << other;
}

TEST(nxTradingHoursTest, RefusesWhatIsNoSession)
{
    for (const char* text :
         {"", "9:30-16:00", "09:30", "09:30-25:00", "24:00-24:00", "09:60-10:00", "Mo 09:30-16:00",
          "Mon-Fry 09:30-16:00", "Mon 09:30-16:00,", "09:30-16:00 UTC", "09:30-24:01", "Mon,Tue 09:30-10:00",
          "09:00-12:00, Fri 11:59-13:00", "Wed 23:00-01:00, Thu 00:30-02:00"})
    {
        nxTradingHours hours;
        EXPECT_NE(nxTradingHours::SetFromText(text, hours), nullptr) << text;
        EXPECT_TRUE(hours.IsEmpty());
    }
}

}  // namespace
