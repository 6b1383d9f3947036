#include "scriptFramework/market/nxAlgoStateObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoStateObject, EachFunctionTestsItsOwnBit)
{
    const std::pair<unsigned int, const char*> rows[] = {
        {0x1, "true false false"},
        {0x2, "false true false"},
        {0x4, "false false false"},
        {0x8, "false false true"},
    };
    nxScriptJob script;
    for (const auto& [bits, expected] : rows) {
        nxAlgoStateObject object(&script.host, 6, bits);
        ASSERT_TRUE(script.Bring(&nxAlgoJobObject::OnProductState, object));
        EXPECT_EQ(script.Evaluate("it:isPreOpen(), it:isOpen(), it:isClosed()"), expected) << bits;
    }
}

}  // namespace
