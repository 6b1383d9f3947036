#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"
#include "tests/support/nxTestDataStore.h"

namespace {

// The limits on rows and columns are the script's; a host is bound by none of them, a script's stack is.
TEST(nxAlgoDataStoreObject, AHostLoadsMoreThanAScriptMayAdd)
{
    nxScriptJob script;
    nxTestDataStore store(&script.host);
    script.host.dataStore = &store;
    store._LoadRow(nxTestDataStore::Row(1000, "x"));
    store._LoadRow(nxTestDataStore::Row(1'000'000, "x"));
    EXPECT_EQ(script.Evaluate("s = job:getDataStore('old') return select('#', s:get(1))"), "1000");
    EXPECT_NE(script.Evaluate("s:get(2)").find("too many results"), std::string::npos);
}

}  // namespace
