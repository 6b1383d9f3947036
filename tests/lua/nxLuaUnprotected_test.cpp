// Lua errors that are raised outside any protected call of the script's own: while the library looks a
// callback up, pushes its argument or loads a text. Each is a failure with a text, and the next call works.

#include <gtest/gtest.h>

#include "base/enums/nxEnumValue.h"
#include "tests/lua/nxProbe.h"

namespace {

TEST(nxLuaUnprotected, ARaisingFinalizer)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText(R"lua(
        collectgarbage("setpause", 0)
        raised, calls = 0, 0
        function Arm() getmetatable(newproxy(true)).__gc = function() raised = raised + 1; error("boo", 0) end end
        function OnX(object) calls = calls + 1; Arm() end
    )lua"));
    nxLuaFunction onX(engine, "OnX");
    int failures = 0;
    for (int i = 0; i < 2000; ++i) {
        if (onX.Call(engine.probe)) continue;
        ++failures;
        ASSERT_EQ(engine.GetLastError(), "boo");
    }
    EXPECT_GT(engine.GetGlobalNumber("calls"), 0);
    EXPECT_GT(failures, 0);
    for (int i = 0; i < 2000; ++i) {
        const bool loaded = engine.LoadText("Arm()");
        ASSERT_EQ(engine.GetLastError(), loaded ? "" : "boo");
        static_cast<void>(engine.GetGlobalNumber("raised"));
        static_cast<void>(engine.DoesFunctionExist("OnX"));
        engine.RemoveFunction("nothing");
        static_cast<void>(nxLuaWrapper<nxProbe>::SetGlobal(engine, "probe", &engine.probe));
    }
    ASSERT_TRUE(engine.LoadModule("collectgarbage('stop')")) << engine.GetLastError();
    EXPECT_TRUE(onX.Call(engine.probe)) << engine.GetLastError();
}

TEST(nxLuaUnprotected, LackOfMemory)
{
    nxProbeEngine engine;
    ASSERT_TRUE(
        engine.LoadText("calls = 0; function OnX(object) calls = calls + 1; kept = object end "
                        "function Eat() local t = {} for i = 1, 1e7 do t[i] = {i} end end"));
    nxLuaFunction onX(engine, "OnX");
    ASSERT_TRUE(onX.Call(engine.probe));

    // From nothing to spare up to enough: wherever the memory gives out, the entry says so.
    const std::size_t inUse = engine.GetMemory().GetBytesInUse();
    bool succeeded = false;
    for (std::size_t spare = 0; !succeeded && spare < 65536; spare += 8) {
        engine.SetMemoryLimit(inUse + spare);
        succeeded = onX.Call(engine.probe);
        ASSERT_EQ(engine.GetLimitError(), succeeded ? 0u : static_cast<unsigned int>(nxError_LimitMemory))
            << spare;
        ASSERT_EQ(engine.GetLastError().ends_with("exceeded: not enough memory"), !succeeded) << spare;
    }
    EXPECT_TRUE(succeeded);

    engine.SetMemoryLimit(engine.GetMemory().GetBytesInUse());
    EXPECT_FALSE(onX.Call(engine.probe));
    EXPECT_FALSE(engine.LoadText("function OnY() end"));
    EXPECT_EQ(engine.GetLimitError(), nxError_LimitMemory);
    EXPECT_FALSE(engine.LoadScript("/no/such/file"));
    EXPECT_FALSE(nxLuaWrapper<nxProbe>::SetGlobal(engine, "again", &engine.probe));
    static_cast<void>(engine.DoesFunctionExist("aNameThatLuaHasNotSeen"));
    EXPECT_EQ(engine.GetGlobalNumber("anotherNameThatLuaHasNotSeen"), 0.0);
    engine.SetMemoryLimit(0);
    EXPECT_TRUE(onX.Call(engine.probe)) << engine.GetLastError();

    // A script that eats all there is.
    nxLuaFunction eat(engine, "Eat");
    engine.SetMemoryLimit(engine.GetMemory().GetBytesInUse() + (4 << 20));
    EXPECT_FALSE(eat.Call());
    EXPECT_EQ(engine.GetLimitError(), nxError_LimitMemory);
    engine.SetMemoryLimit(0);
    EXPECT_TRUE(onX.Call(engine.probe)) << engine.GetLastError();
}

// What the script hung on its globals may raise there, or make the host throw.
TEST(nxLuaUnprotected, AnErrorBelowAMetamethodOfTheGlobals)
{
    const std::pair<bool, const char*> rows[] = {
        {false, "bad argument #1 to 'run' (number expected, got string)"}, {true, "C++ exception"}};
    for (const auto& [throws, text] : rows) {
        nxProbeEngine engine;
        engine.probe.body = [throws](nxLuaParameters& parameters, auto&) {
            if (throws) throw 42;
            return parameters.Parameter(1).GetNumber() > 0;
        };
        ASSERT_TRUE(
            engine.LoadText("local probe = probe; function OnX(object) object.first = object.first + 1 end "
                            "setmetatable(_G, {__index = function(_, name) probe:run(name) end})"));
        nxLuaFunction onX(engine, "OnX");
        for (int i = 0; i < 1000; ++i) {
            nxLuaFunction onY(engine, "OnY");
            EXPECT_FALSE(onY.Call(engine.probe));
            EXPECT_NE(engine.GetLastError().find(text), std::string::npos) << engine.GetLastError();
            EXPECT_EQ(engine.GetGlobalNumber("none"), 0.0);
            EXPECT_FALSE(engine.DoesFunctionExist("none"));
            ASSERT_TRUE(onX.Call(engine.probe));
        }
        EXPECT_EQ(engine.probe.first, 1001.0);
    }
}

}  // namespace
