#include "scriptFramework/job/nxAlgoJobInterface.h"

#include <gtest/gtest.h>

#include "scriptFramework/lua/nxAlgoObject.h"
#include "tests/support/nxRecordingHost.h"

namespace {

TEST(nxAlgoJobInterface, AnswersWhatAHostLeavesOpen)
{
    nxRecordingHost host;
    EXPECT_EQ(host.nxAlgoJobInterface::GetLogPrefix(), "BASE");
    EXPECT_TRUE(host.GetSyntheticChildOrderType().IsUndefined());
}

TEST(nxAlgoObject, ItsLogPrefixIsTheHostsAtTheTime)
{
    nxRecordingHost host;
    const nxAlgoObject object(&host);
    const nxAlgoObject copy(object);
    EXPECT_EQ(copy.GetLogPrefix(), "[test] ");
    host.logPrefix = "[later] ";
    EXPECT_EQ(copy.GetLogPrefix(), "[later] ");
    EXPECT_EQ(nxAlgoObject(nullptr).GetLogPrefix(), "");
}

}  // namespace
