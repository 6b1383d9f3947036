#include "base/log/nxLog.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/enums/nxBoolEnum.h"
#include "base/log/nxConsoleLogDevice.h"
#include "base/log/nxFileLogDevice.h"
#include "base/log/nxLogEntriesQueue.h"
#include "base/log/nxLogMessage.h"
#include "base/time/nxTimeSource.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;

class RecordingDevice : public nxLogDevice
{
public:
    RecordingDevice() { nxLogManager::GetLogEntriesQueue().AddDevice(this); }
    ~RecordingDevice() override { nxLogManager::GetLogEntriesQueue().RemoveDevice(this); }
    nxErrorEnum Destroy() override { return {}; }
    void Write(const nxLog& log) override
    {
        lines.emplace_back(log.GetLogEntry());
        times.push_back(log.GetTimeStamp().GetAsString());
        files.emplace_back(log.GetSourceFile());
        users.push_back(log.GetDestinationUserID());
        applications.push_back(log.GetSourceApplication());
    }
    void Flush() override { ++flushes; }

    std::vector<std::string> lines, times, files, applications;
    std::vector<nxVolume> users;
    int flushes = 0;
};

class FixedSource : public nxTimeSource
{
public:
    nxTimeStamp GetNow() const override { return {1723109696, 123456789u}; }
};

struct Level
{
    explicit Level(const nxLogLevelEnum& level) { nxLogManager::SetLevel(level); }
    ~Level() { nxLogManager::SetLevel(nxLogLevel::Info); }
};

// A part that counts how often it is formatted.
struct Counting
{
    int& count;
};
nxLog& operator<<(nxLog& log, const Counting& part)
{
    ++part.count;
    return log << "counted";
}

TEST(nxLog, ALevelThatIsOffFormatsNothing)
{
    RecordingDevice device;
    int count = 0;
    nxLogMessage(nxLogLevel::Detail, Counting{count});
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(device.lines.empty());
    {
        const Level level(nxLogLevel::Error);
        nxLogMessage(nxLogLevel::Warn, Counting{count});
        nxLogMessage(nxLogLevel::Error, "error ", Counting{count});
    }
    const Level all{nxLogLevelEnum()};
    nxLogMessage(nxLogLevel::Detail, "detail ", Counting{count});
    EXPECT_EQ(count, 2);
    EXPECT_THAT(device.lines, ElementsAre("error counted", "detail counted"));
}

TEST(nxLog, StreamsEveryKindOfPart)
{
    RecordingDevice device;
    const std::size_t size = 5;
    nxLogMessage(nxLogLevel::Info, "a", std::string("b"), nxLogCharLenPair{"cdef", 1}, -1, 2u, 3ull, size,
                 0.5, true, false);
    nxLogMessage(nxLogLevel::Info, nxDateTime(2024, 8, 8, 9, 30, 0, 0), " ", nxDateTime(), " ",
                 nxDateTime(1ll));
    nxLogMessage(nxLogLevel::Info, nxBoolEnum(nxBool_True), " ", nxErrorEnum(nxError_NotANumber), " ",
                 nxErrorEnum(1999999));
    nxLogMessage(nxLogLevel::Info, nxVolume(7), " ", nxVolume(), " ", nxDecimal(5, 4, 2), " ", nxDecimal());
    EXPECT_THAT(device.lines,
                ElementsAre("abc-12350.5truefalse", "20240808:09:30:00 NULL NO_CHANGE",
                            "TRUE 1000010 not a number 1999999 NOT_REGISTERED", "7 NULL 1.25 NULL"));
}

TEST(nxLog, TheTerminatorEndsTheLineAndTheDestructorHandsItOver)
{
    RecordingDevice device;
    {
        nxLog log(nxLogLevel::Info, "file.cpp", 12);
        log << "kept" << nxLog::nxLogTerminator();
        log << " dropped";
        EXPECT_TRUE(device.lines.empty());
        EXPECT_EQ(log.GetLineNumber(), 12u);
    }
    EXPECT_THAT(device.lines, ElementsAre("kept"));
    EXPECT_THAT(device.files, ElementsAre("file.cpp"));
}

TEST(nxLog, KnowsPlaceTimeAndDestination)
{
    RecordingDevice device;
    const FixedSource source;
    const nxTimeSource::Installation installation(source);
    nxLogMessage(nxLogLevel::Info, "plain");
    nxLogMessage(nxLogLevel::Info, nxLog::nxLogDestinationUserID{5}, "to a user");
    nxLogMessage(nxLogLevel::Info, nxLog::nxLogSourceApplicationDestUserID{6, "app"}, "from an application");
    EXPECT_THAT(device.files[0], EndsWith("nxLog_test.cpp"));
    EXPECT_EQ(device.times[0], "20240808:09:34:56.123456789");
    EXPECT_THAT(device.users, ElementsAre(nxVolume(), nxVolume(5), nxVolume(6)));
    EXPECT_THAT(device.applications, ElementsAre("", "", "app"));
}

TEST(nxLogEntriesQueue, ServesEachDeviceOnceUntilItIsRemoved)
{
    nxLogEntriesQueue& queue = nxLogManager::GetLogEntriesQueue();
    RecordingDevice first;
    queue.AddDevice(&first);
    queue.AddDevice(nullptr);
    {
        RecordingDevice second;
        nxLogMessage(nxLogLevel::Info, "both");
        EXPECT_EQ(second.lines.size(), 1u);
    }
    nxLogMessage(nxLogLevel::Info, "one");
    queue.Flush();
    EXPECT_THAT(first.lines, ElementsAre("both", "one"));
    EXPECT_EQ(first.flushes, 1);
}

class nxFileLogDeviceTest : public testing::Test
{
protected:
    nxFileLogDeviceTest() : directory(testing::TempDir() + "nxFileLogDevice." + std::to_string(getpid()))
    {
        std::filesystem::create_directories(directory);
    }
    ~nxFileLogDeviceTest() override { std::filesystem::remove_all(directory); }
    static std::string Read(const std::string& path)
    {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    const std::string directory;
};

TEST_F(nxFileLogDeviceTest, WritesWholeLinesInOrderWithTheirOwnTime)
{
    const FixedSource source;
    const nxTimeSource::Installation installation(source);
    const std::string path = directory + "/log.txt";
    nxFileLogDevice device;
    nxLogEntriesQueue& queue = nxLogManager::GetLogEntriesQueue();
    queue.AddDevice(&device);
    nxLogMessage(nxLogLevel::Info, "before the file is open");
    ASSERT_TRUE(device.Open(path).IsSuccess());
    nxLogMessage(nxLogLevel::Info, "one {} %v");
    queue.Flush();
    const std::string begin = "20240808:09:34:56.123 ";
    EXPECT_EQ(Read(path), begin + "INFO one {} %v\n");
    std::string expected = Read(path);
    for (int i = 0; i < 20000; ++i) {
        nxLogMessage(nxLogLevel::Error, i);
        expected += begin + "ERROR " + std::to_string(i) + "\n";
    }
    queue.RemoveDevice(&device);
    EXPECT_TRUE(device.Destroy().IsSuccess());
    EXPECT_TRUE(device.Destroy().IsSuccess());
    device.Write(nxLog(nxLogLevel::Info, "", 0));
    EXPECT_TRUE(Read(path) == expected);
}

TEST_F(nxFileLogDeviceTest, BeginsANewFileAtItsSizeAndReportsOneItCanNotOpen)
{
    nxFileLogDevice device;
    EXPECT_EQ(device.Open(directory), nxError_LogFileFailed);
    ASSERT_TRUE(device.Open(directory + "/log.txt", 1000, 2).IsSuccess());
    for (int i = 0; i < 100; ++i) {
        nxLog log(nxLogLevel::Info, "", 0);
        log << "line " << i;
        device.Write(log);
    }
    EXPECT_TRUE(device.Destroy().IsSuccess());
    EXPECT_THAT(Read(directory + "/log.txt"), EndsWith(" INFO line 99\n"));
    EXPECT_LE(std::filesystem::file_size(directory + "/log.1.txt"), 1000u);
    EXPECT_TRUE(std::filesystem::exists(directory + "/log.2.txt"));
    EXPECT_FALSE(std::filesystem::exists(directory + "/log.3.txt"));
}

TEST(nxConsoleLogDevice, WritesToStandardError)
{
    const FixedSource source;
    const nxTimeSource::Installation installation(source);
    testing::internal::CaptureStderr();
    {
        nxConsoleLogDevice device;
        nxLog log(nxLogLevel::Warn, "", 0);
        log << "careful";
        device.Write(log);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "20240808:09:34:56.123 WARN careful\n");
}

}  // namespace
