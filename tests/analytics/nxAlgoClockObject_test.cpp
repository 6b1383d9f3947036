#include "scriptFramework/analytics/nxAlgoClockObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxRowFile.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxSetTime.h"

namespace {

nxDateTime Date(const std::string& text)
{
    nxDateTime date;
    EXPECT_TRUE(nxDateTime::SetFromString(text, date).IsSuccess()) << text;
    return date;
}

nxTimeStamp Stamp(const std::string& text, unsigned int nanoseconds = 0)
{
    return nxTimeStamp(Date(text).GetAsTimeValue(), nanoseconds);
}

constexpr const char* Shown = "clock.year, clock.month, clock.day, clock.hour, clock.minute, clock.second";

TEST(nxAlgoClockObject, ShowsTheCurrentTimeUntilAHostSetsOne)
{
    nxSetTime time(Stamp("20240131:23:59:58", 250000000));
    nxScriptJob script;
    EXPECT_EQ(script.Evaluate(Shown), "2024 1 31 23 59 58");
    EXPECT_EQ(script.Evaluate("string.format('%.3f', clock.totalSeconds)"), "'1706745598.250'");
    script.job.SetClockSpeed(60.0);
    time.now = Stamp("20240201:00:00:01");
    EXPECT_EQ(script.Evaluate(Shown), "2024 2 1 0 0 1");
}

TEST(nxAlgoClockObject, ASetTimeRunsOnAtItsSpeed)
{
    const std::tuple<double, int, const char*> rows[] = {
        {1.0, 60, "2020 2 29 0 0 0"},     {3600.0, 1, "2020 2 29 0 59 0"}, {0.5, 3, "2020 2 28 23 59 1"},
        {0.0, 1000, "2020 2 28 23 59 0"}, {-1.0, 60, "2020 2 28 23 58 0"}, {-0.5, 3, "2020 2 28 23 58 59"},
    };
    for (const auto& [speed, realSeconds, expected] : rows) {
        SCOPED_TRACE(testing::Message() << speed << " for " << realSeconds);
        nxSetTime time(Stamp("20240131:12:00:00"));
        nxScriptJob script;
        script.job.SetClockTime(Date("20200228:23:59:00"));
        script.job.SetClockSpeed(speed);
        time.now = nxTimeStamp(time.now.GetAsTimeValue() + realSeconds, 0u);
        EXPECT_EQ(script.Evaluate(Shown), expected);
    }
}

// The date counts from the last time that was set, the total from the first and from the clock's creation.
TEST(nxAlgoClockObject, DateAndTotalDriftApartWhenTheTimeIsSetAgain)
{
    nxSetTime time(Stamp("20240131:12:00:00"));
    nxScriptJob script;  // creates the clock
    const auto shown = [&] {
        return script.Evaluate("clock.hour, clock.minute, clock.second, clock.totalSeconds");
    };
    const auto passed = [](const char* hours, long long seconds) {
        return hours + (" " + std::to_string(Date("20200101:08:00:00").GetAsTimeValue() + seconds));
    };
    time.now = Stamp("20240131:12:00:10");
    script.job.SetClockTime(Date("20200101:08:00:00"));
    EXPECT_EQ(shown(), passed("8 0 0", 10));
    time.now = Stamp("20240131:12:00:20");
    EXPECT_EQ(shown(), passed("8 0 10", 20));
    script.job.SetClockTime(Date("20200101:09:00:00"));
    EXPECT_EQ(shown(), passed("9 0 0", 20));
    // A new speed holds for all the time since, backwards too.
    time.now = Stamp("20240131:12:00:30");
    script.job.SetClockSpeed(6.0);
    EXPECT_EQ(shown(), passed("9 1 0", 180));
}

TEST(nxAlgoClockObject, TellsWhetherTheTimeOfDayIsInARange)
{
    nxSetTime time(Stamp("20240131"));
    nxScriptJob script;
    nxExpectRows("scripts/times.txt", [&](const std::string& row) {
        time.now = Stamp("20240131:" + row.substr(0, 8));
        return script.Evaluate("clock:isInRange(" + row.substr(9) + ")");
    });
}

}  // namespace
