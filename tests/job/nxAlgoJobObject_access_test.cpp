#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

TEST(nxAlgoJobObjectAccess, GetProductAsksTheHost)
{
    nxScriptJob script;
    script.AddProduct("FDAX", 3);
    script.AddProduct("7", 4);
    const std::pair<const char*, const char*> rows[] = {
        {"job:getProduct('FDAX').id", "3"},
        {"job:getProduct(7).id", "4"},
        {"job:getProduct('none')", "error: getProduct could not find product none"},
        {"job:getProduct('')", "error: getProduct could not find product "},
        {"job:getProduct()", "error: getProduct requires 1 argument [productID]"},
        {"job:getProduct('FDAX', 1)", "error: getProduct requires 1 argument [productID]"},
        {"job:getProduct({})", "error: bad argument #1 to 'getProduct' (string expected, got table)"},
        {"job.getProduct('FDAX')",
         "error: bad argument #1 to 'getProduct' (nxAlgoJobObject expected, got string)"},
        {"job.calculate", "nil"},
    };
    for (const auto& [code, expected] : rows)
        EXPECT_EQ(script.Evaluate(code), expected) << code;
}

}  // namespace
