#include "scriptFramework/market/nxAlgoStateObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoStateObject, EachFunctionTestsItsOwnBit)
{
    const std::pair<unsigned int, const char*> rows[] = {
        {0x0, "false false false"}, {0x1, "true false false"}, {0x2, "false true false"},
        {0x4, "false false false"}, {0x8, "false false true"}, {0x3, "true true false"},
        {0xB, "true true true"},    {0x9, "true false true"},
    };
    nxScriptJob script;
    for (const auto& [bits, expected] : rows) {
        nxAlgoStateObject object(&script.host, 6, bits);
        ASSERT_TRUE(script.job.OnProductState(object).IsSuccess());
        EXPECT_EQ(script.Evaluate("it:isPreOpen(), it:isOpen(), it:isClosed()"), expected) << bits;
    }
    nxAlgoStateObject object(&script.host, 6);
    ASSERT_TRUE(script.job.OnProductState(object).IsSuccess());
    EXPECT_EQ(script.Evaluate("it.id, it:isOpen()"), "6 false");
    object.SetState(0x2u);
    EXPECT_EQ(script.Evaluate("it:isOpen(1, 2)"), "true");
}

}  // namespace
