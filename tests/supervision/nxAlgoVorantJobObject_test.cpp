#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/support/nxRecordingLog.h"
#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestVorantJob.h"

namespace {

nxVorantJobStatus MakeStatus(const std::string& text, const std::string& outputParameters)
{
    nxVorantJobStatus status;
    status.SetUserText1(text + "1");
    status.SetUserText2(text + "2");
    status.SetUserText3(text + "3");
    status.SetUserStateText(text + " state");
    status.SetUserStateLevel(nxLogLevel_Warn);
    status.SetTransactionCount(static_cast<unsigned int>(text.size()));
    status.SetOutputParameters(outputParameters);
    return status;
}

class nxAlgoVorantJobObjectTest : public testing::Test
{
protected:
    nxAlgoVorantJobObjectTest() { EXPECT_TRUE(script.job.OnJobUpdate(watched).IsSuccess()); }

    nxScriptJob script;
    nxTestVorantJob watched{&script.host, 7};
};

TEST_F(nxAlgoVorantJobObjectTest, ShowsTheOtherJob)
{
    script.ExpectRows("watched.txt", "fresh");
    watched.SetStatus(MakeStatus("text", R"(width=a\;b;5=five)"));
    watched.SetSelection(nxDecimal::FromMantissa(1005, 1), 5);
    watched._name = "worker";
    watched._owner = "me";
    watched._isContext = true;
    watched._selectedProduct = "FDAX";
    watched._selectedSide = "BUY";
    script.ExpectRows("watched.txt");
    watched.SetSelection(nxDecimal(nxNoChangeInitalizer()), nxVolume(nxNoChangeInitalizer()));
    EXPECT_EQ(script.Evaluate("it.selectedPrice, it.selectedVolume"), "nil nil");
}

TEST_F(nxAlgoVorantJobObjectTest, NamesNoOtherStateLevelAndNeverFailsToStop)
{
    nxVorantJobStatus status;
    status.SetUserStateLevel(nxLogLevel_Audit);
    watched.SetStatus(status);
    EXPECT_EQ(script.Evaluate("it:stop() it:subscribe('ignored') it:stop(1, 2) return it.userStateLevel"),
              "''");
    EXPECT_EQ(watched.calls, "stop subscribe stop ");
}

// What the parsing left is spoilt, so that parsing again would show.
TEST_F(nxAlgoVorantJobObjectTest, ParsesOutputParametersOncePerChange)
{
    EXPECT_EQ(script.Evaluate("it:getOutputParameter('a')"), "nil");
    watched._outputParameters = {{"a", "spoilt"}};
    EXPECT_EQ(script.Evaluate("it:getOutputParameter('a')"), "'spoilt'");  // empty from the start: no parsing
    watched.SetStatus(MakeStatus("x", "a=1;faulty"));
    EXPECT_EQ(script.Evaluate("it:getOutputParameter('a')"), "'1'");
    watched._outputParameters = {{"a", "spoilt"}};
    watched.SetStatus(MakeStatus("y", "a=1;faulty"));
    EXPECT_EQ(script.Evaluate("it:getOutputParameter('a')"), "'spoilt'");
    watched.SetStatus(MakeStatus("y", "b=1;faulty"));
    nxRecordingLog log;
    EXPECT_EQ(script.Evaluate("it:getOutputParameter('a'), it:getOutputParameter('b')"), "nil '1'");
    EXPECT_EQ(log.TakeLines(),
              "32 [test] vorantJob:getOutputParameter parameter : a not set \n"
              "32 [test] vorantJob:getOutputParameter parameter : b , value : 1\n");
}

TEST(nxAlgoVorantJobObjectThread, AHostThreadWritesWhileAScriptReads)
{
    nxScriptJob script;
    nxTestVorantJob watched(&script.host, 7);
    ASSERT_TRUE(script.job.OnJobUpdate(watched).IsSuccess());
    std::atomic<bool> done = false;
    std::atomic<bool> writing = false;
    std::thread host([&] {
        for (unsigned int i = 0; !done; ++i) {
            const std::string text = std::to_string(i);
            watched.SetStatus(MakeStatus(text, "a=" + text + ";b=" + text));
            watched.SetSelection(nxDecimal::FromMantissa(i, 0), i);
            writing = true;
        }
    });
    while (!writing)
        std::this_thread::yield();
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(script.Evaluate("local all = it.id .. it.name .. it.reference .. it.owner .. it.userText1 "
                                  ".. it.userText2 .. it.userText3 .. it.userStateLevel .. it.userStateText "
                                  ".. it.transactionCount .. it.selectedProduct .. it.selectedPrice "
                                  ".. it.selectedVolume .. it.selectedSide .. it:getOutputParameter('a') "
                                  "assert(it.running and not it.isContext) "
                                  "assert(tonumber(it:getOutputParameter('b')) and #all > 10)"),
                  "");
    done = true;
    host.join();
}

}  // namespace
