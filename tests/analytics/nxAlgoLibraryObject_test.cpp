#include "scriptFramework/analytics/nxAlgoLibraryObject.h"

#include <gtest/gtest.h>

#include "tests/support/nxScriptJob.h"

namespace {

// A script cannot reach loadLibrary; this class binds it for the test.
struct Loader : public nxAlgoJobObject
{
    static constexpr const char* className = "Loader";
    static const nxLuaWrapper<Loader>::FunctionType Functions[];
    static const nxLuaWrapper<Loader>::PropertyType Properties[];

    using nxAlgoJobObject::nxAlgoJobObject;
};

constexpr nxLuaWrapper<Loader>::FunctionType Loader::Functions[] = {{"load", &Loader::loadLibrary}, {}};
constexpr nxLuaWrapper<Loader>::PropertyType Loader::Properties[] = {{}};

class LoaderEngine : public nxLuaEngine
{
protected:
    void _RegisterCustomObjects() override
    {
        nxLuaWrapper<Loader>::Register(_GetState());
        nxLuaWrapper<nxAlgoLibraryObject>::Register(_GetState());
    }
};

TEST(nxAlgoLibraryObject, IsLoadedByTheHostAndCallsNothing)
{
    nxRecordingHost host;
    Loader loader(&host);
    nxAlgoLibraryObject library(&host);  // there is none at its path
    LoaderEngine engine;
    ASSERT_TRUE(engine.LoadText(nxEvaluatorText())) << engine.GetLastError();
    ASSERT_TRUE(nxLuaWrapper<Loader>::SetGlobal(engine, "loader", &loader));
    EXPECT_TRUE(engine.LoadText(R"lua(
assert(evaluate("loader:load()") == "error: loadLibrary requires 1 argument [libraryname]")
assert(evaluate("loader:load('m')") == "error: loadLibrary could not load library m"))lua"))
        << engine.GetLastError();
    EXPECT_EQ(host.TakeCalls(), "LoadLibrary(m)");
    host.library = &library;
    EXPECT_TRUE(engine.LoadText(R"lua(
local l = loader:load("m")
assert(select("#", l:call({1, 2, 3})) == 1 and l:call({1, 2, 3}) == nil)
assert(select("#", l:call(5)) + select("#", l:call({"x"})) + select("#", l:call()) == 0))lua"))
        << engine.GetLastError();
}

}  // namespace
