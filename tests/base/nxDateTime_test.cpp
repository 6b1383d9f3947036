#include "base/time/nxDateTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <random>
#include <thread>

#include "base/time/nxTimeSource.h"

namespace {

using namespace std::chrono;

class FixedSource : public nxTimeSource
{
public:
    explicit FixedSource(long long nanoseconds) : _now(nxTimeStamp::FromNanoseconds(nanoseconds)) {}
    nxTimeStamp GetNow() const override { return _now; }

private:
    nxTimeStamp _now;
};

TEST(nxDateTime, AgreesWithTheCalendar)
{
    std::mt19937_64 random(11);
    const long long first = sys_seconds{sys_days{year{1} / 1 / 1}}.time_since_epoch().count();
    const long long last = sys_seconds{sys_days{year{10000} / 1 / 1}}.time_since_epoch().count();
    for (int i = 0; i < 20000; ++i) {
        const long long time =
            first + static_cast<long long>(random() % static_cast<unsigned long long>(last - first));
        if (time == 0 || time == 1) continue;
        const nxDateTime date(time);
        ASSERT_TRUE(date.IsValid()) << time;
        const auto midnight = floor<days>(sys_seconds{seconds{time}});
        const year_month_day calendar{midnight};
        ASSERT_EQ(date.GetYear(), static_cast<int>(calendar.year())) << time;
        ASSERT_EQ(date.GetMonth(), static_cast<int>(static_cast<unsigned int>(calendar.month()))) << time;
        ASSERT_EQ(date.GetDay(), static_cast<int>(static_cast<unsigned int>(calendar.day()))) << time;
        const long long secondOfDay = time - sys_seconds{midnight}.time_since_epoch().count();
        ASSERT_EQ(date.GetHour() * 3600 + date.GetMinute() * 60 + date.GetSecond(), secondOfDay) << time;

        nxDateTime read;
        ASSERT_TRUE(nxDateTime::SetFromString(date.GetAsString(), read).IsSuccess()) << time;
        ASSERT_EQ(read, date) << time;
        ASSERT_EQ(nxDateTime(date.GetYear(), date.GetMonth(), date.GetDay(), date.GetHour(), date.GetMinute(),
                             date.GetSecond(), 0),
                  date)
            << time;
    }
    EXPECT_FALSE(nxDateTime(first - 1).IsValid());
    EXPECT_FALSE(nxDateTime(last).IsValid());
    EXPECT_EQ(nxDateTime(first - 1).GetAsString(), "");
    EXPECT_EQ(nxDateTime(last).GetYear(), 0);
}

TEST(nxDateTime, WritesTheLettersItKnows)
{
    const nxDateTime date(2024, 8, 8, 9, 5, 7, 0);
    EXPECT_EQ(date.GetAsString("%d.%m.%Y %H-%M-%S"), "08.08.2024 09-05-07");
    EXPECT_EQ(date.GetAsString("100%% %q %"), "100% %q %");
    EXPECT_EQ(nxDateTime().GetAsString("%Y"), "");
}

TEST(nxDateTime, MarksAreTheFirstTwoSecondsAndSurviveSums)
{
    EXPECT_TRUE(nxDateTime(0ll).IsNull());
    EXPECT_TRUE(nxDateTime(1ll).IsNoChange());
    EXPECT_TRUE(nxDateTime(-1ll).IsValid());
    nxDateTimeSpan minute;
    minute.SetSeconds(60);
    EXPECT_TRUE((nxDateTime() + minute).IsNull());
    EXPECT_TRUE((nxDateTime(1ll) + minute).IsNoChange());
    EXPECT_TRUE((nxDateTime(std::numeric_limits<long long>::max()) + minute).IsNull());
    EXPECT_EQ((nxDateTime(2024, 12, 31, 23, 59, 30, 0) + minute).GetAsString(), "20250101:00:00:30");
}

TEST(nxTimeStamp, CountsNanosecondsAroundTheEpoch)
{
    const std::tuple<long long, long long, unsigned int> rows[] = {
        {-1, -1, 999999999},
        {1723109696123456789, 1723109696, 123456789},
        {std::numeric_limits<long long>::max(), 9223372036, 854775807},
        {std::numeric_limits<long long>::min(), -9223372037, 145224192}};
    for (const auto& [total, seconds, nanoseconds] : rows) {
        const nxTimeStamp stamp = nxTimeStamp::FromNanoseconds(total);
        EXPECT_EQ(stamp.GetAsTimeValue(), seconds);
        EXPECT_EQ(stamp.GetNanoseconds(), nanoseconds);
        EXPECT_EQ(stamp.GetTotalNanoseconds(), total);
    }
    const nxTimeStamp stamp = nxTimeStamp::FromNanoseconds(1723109696003456789);
    EXPECT_EQ(stamp.GetAsString(), "20240808:09:34:56.003456789");
    EXPECT_EQ(stamp.GetMilliseconds(), 3u);
    EXPECT_EQ(stamp.GetMicroseconds(), 3456u);
}

TEST(nxTimeSource, InstallationsNestAndStayOnTheirThread)
{
    const FixedSource outer(5'000'000'007);
    const FixedSource inner(6'000'000'000);
    {
        const nxTimeSource::Installation installation(outer);
        EXPECT_EQ(nxTimeStamp().GetTotalNanoseconds(), 5'000'000'007);
        EXPECT_EQ(nxDateTime::GetCurrentTimeAsGMT(), nxDateTime(5ll));
        {
            const nxTimeSource::Installation nested(inner);
            EXPECT_EQ(nxTimeSource::Now().GetAsTimeValue(), 6);
        }
        EXPECT_EQ(nxTimeSource::Now().GetAsTimeValue(), 5);
        std::thread([] { EXPECT_GT(nxTimeSource::Now().GetAsDateTime().GetYear(), 2000); }).join();
    }
    EXPECT_GT(nxTimeSource::Now().GetAsDateTime().GetYear(), 2000);
}

}  // namespace
