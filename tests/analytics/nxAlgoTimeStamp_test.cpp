#include "scriptFramework/analytics/nxAlgoTimeStamp.h"

#include <gtest/gtest.h>

#include "tests/support/nxRecordingHost.h"
#include "tests/support/nxSetTime.h"

namespace {

// Scripts see a time stamp as a clock, so this engine binds one under that class.
class Engine : public nxLuaEngine
{
public:
    explicit Engine(nxAlgoTimeStamp& stamp)
    {
        EXPECT_TRUE(LoadText(""));
        EXPECT_TRUE(nxLuaWrapper<nxAlgoClockObject>::SetGlobal(*this, "stamp", &stamp));
    }

    double Number(const std::string& expression)
    {
        EXPECT_TRUE(LoadModule("result = " + expression)) << GetLastError();
        return GetGlobalNumber("result");
    }

protected:
    void _RegisterCustomObjects() override { nxLuaWrapper<nxAlgoClockObject>::Register(_GetState()); }
};

constexpr long long Noon = 1706702400;  // 2024-01-31 12:00 UTC

TEST(nxAlgoTimeStamp, ShowsOneMoment)
{
    nxSetTime time(nxTimeStamp(Noon + 86400, 0u));
    nxRecordingHost host;
    nxAlgoTimeStamp stamp(&host);
    Engine engine(stamp);
    EXPECT_FALSE(stamp.IsValid());
    EXPECT_EQ(engine.Number("stamp.year"), 0);

    stamp.SetDateTime(nxDateTime(Noon));
    EXPECT_EQ(engine.Number("stamp.totalSeconds"), Noon);
    EXPECT_EQ(engine.Number("stamp:isInRange('11:59', '12:00') and 1 or 2"), 1);

    stamp.SetTimeStamp(nxTimeStamp(Noon + 1, 500000000u));
    EXPECT_EQ(engine.Number("stamp.totalSeconds"), Noon + 1.5);
    EXPECT_EQ(engine.Number("stamp.second"), 1);

    // What is no clock's to change: neither time nor speed of the base.
    stamp.SetClockTime(nxDateTime(Noon - 86400));
    stamp.SetClockSpeed(60.0);
    time.now = nxTimeStamp(Noon + 2 * 86400, 0u);
    EXPECT_EQ(engine.Number("stamp.day"), 31);
    stamp.SetDateTime(nxDateTime(Noon + 60));
    // A time stamp once set goes on to tell the total, the date the rest.
    EXPECT_EQ(engine.Number("stamp.totalSeconds"), Noon + 1.5);
    EXPECT_EQ(engine.Number("stamp.minute"), 1);
}

}  // namespace
