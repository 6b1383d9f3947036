#include "scriptFramework/lua/nxLuaWrapper.h"

#include <gtest/gtest.h>

#include <lua.hpp>

#include "tests/lua/nxProbe.h"

namespace {

TEST(nxLuaWrapper, ReadsAndWritesProperties)
{
    nxProbeEngine engine;
    engine.ExpectRows({
        {"probe.first", "1"},
        {"probe.readOnly", "'fixed'"},
        {"probe.unknown", "nil"},
        {"probe[true]", "nil"},
        {"probe.writeOnly", "nil"},
        {"probe.failing", "error: cannot be read: 100%s"},
        {"probe.failing = 1", "error: Error setting parameter"},
        {"probe.first = 5; return probe.first", "5"},
        {"probe.readOnly = 'other'; return probe.readOnly, rawget(probe, 'readOnly')", "'fixed' nil"},
        {"probe.writeOnly = {}", ""},
        {"probe.mine = 3; return probe.mine, rawget(probe, 'mine'), probe:again().mine", "3 3 nil"},
        {"probe[5] = 'five'; return probe[5], probe['5'], rawget(probe, 5)", "'five' nil 'five'"},
    });
    EXPECT_EQ(engine.probe.writes, "first=5;writeOnly=TABLE;");
}

// The metatable holds functions under these names, which read as row 0.
TEST(nxLuaWrapper, WritesOfMetamethodNamesReachTheFirstRowsSetter)
{
    nxProbeEngine engine;
    engine.ExpectRows({{"probe.__index, probe.__newindex, probe.__gc", "nil nil nil"},
                       {"probe.__index = 6; return probe.first, rawget(probe, '__index')", "6 nil"},
                       {"probe.__newindex = 7; return probe.first", "7"},
                       {"probe.__gc = 8; return probe.first", "8"},
                       {"probe.__index = {}", "error: bad argument #3 to '?' (number expected, got table)"},
                       {"probe.first", "8"}});
    EXPECT_EQ(engine.probe.writes, "first=6;first=7;first=8;");
}

TEST(nxLuaWrapper, EveryPushIsANewWrapperOverTheSameObject)
{
    nxProbeEngine engine;
    engine.ExpectRows({
        {"probe:again() == probe:again()", "false"},
        {"local a, b = probe:again(), probe:again(); a.first = 9; return b.first", "9"},
        {"type(probe[0]), type(rawget(probe, 'run')), rawget(probe, 'first')", "'userdata' 'function' nil"},
    });
}

TEST(nxLuaWrapper, CallsFunctionsOfItsOwnClassOnly)
{
    nxProbeEngine engine;
    engine.probe.other = &engine.other;
    engine.ExpectRows({
        {"other.value = 10; local twice = other:twice() other.value = 42 return twice", "20"},
        {"probe:getOther():twice()", "84"},
        {"probe.run()", "error: bad argument #1 to 'run' (nxProbe expected, got no value)"},
        {"probe.run(probe[0])", "error: bad argument #1 to 'run' (nxProbe expected, got userdata)"},
        {"probe.run({})", ""},
        {"probe.run(other)", "error: bad argument #1 to 'run' (nxProbe expected, got table)"},
        {"other.twice(probe)", "error: bad argument #1 to 'twice' (nxOther expected, got table)"},
    });
    EXPECT_EQ(engine.other.padding, 7);  // which lies in front of what the wrapper holds
    engine.probe.other = nullptr;
    EXPECT_EQ(engine.Evaluate("probe:getOther()"), "nil");
}

TEST(nxLuaWrapper, TellsAFailureWithItsText)
{
    nxProbeEngine engine;
    const std::tuple<const char*, std::function<bool(nxLuaParameters&, nxLuaResults&)>, const char*> rows[] =
        {
            {"no text", [](auto&, auto&) { return false; }, "error: "},
            {"results before the failure are dropped",
             [](auto&, auto& results) {
                 results.Add(1.0);
                 return results.Fail("late");
             },
             "error: late"},
            {"exception", [](auto&, auto&) -> bool { throw std::runtime_error("host: %s"); },
             "error: host: %s"},
        };
    for (const auto& [name, body, expected] : rows) {
        SCOPED_TRACE(name);
        engine.probe.body = body;
        EXPECT_EQ(engine.Evaluate("probe:run()"), expected);
    }
}

// Nothing but its own handling stands between a Lua error and the C++ frames it passes.
TEST(nxLuaWrapper, LuaErrorsUnwindTheFramesTheyPass)
{
    nxProbeEngine engine;
    int alive = 0;
    engine.probe.body = [&alive](nxLuaParameters& parameters, nxLuaResults& results) {
        struct Guard
        {
            int& count;
            explicit Guard(int& counter) : count(counter) { ++count; }
            ~Guard() { --count; }
        } guard(alive);
        const std::string onTheHeap(1000, 'x');
        results.Add(parameters.Parameter(1).GetNumber());
        return true;
    };
    EXPECT_EQ(engine.Evaluate("probe:run(5)"), "5");
    EXPECT_EQ(engine.Evaluate("probe:run({})"),
              "error: bad argument #1 to 'run' (number expected, got table)");
    EXPECT_EQ(alive, 0);
}

TEST(nxLuaWrapper, AForeignExceptionFailsTheCallWithAText)
{
    nxProbeEngine engine;
    engine.probe.body = [](auto&, auto&) -> bool { throw 42; };
    ASSERT_TRUE(engine.LoadText("function OnX() probe:run() end"));
    nxLuaFunction function(engine, "OnX");
    EXPECT_FALSE(function.Call());
    EXPECT_EQ(engine.GetLastError(), "C++ exception");
    engine.probe.body = [](auto&, auto&) { return true; };
    EXPECT_TRUE(function.Call());
}

TEST(nxLuaWrapper, RefusesAStateThatIsNoEngines)
{
    const std::unique_ptr<lua_State, void (*)(lua_State*)> foreign(luaL_newstate(), lua_close);
    for (const lua_CFunction use : {lua_CFunction([](lua_State* L) {
                                        nxLuaWrapper<nxProbe>::Register(L);
                                        return 0;
                                    }),
                                    lua_CFunction([](lua_State* L) {
                                        nxLuaWrapper<nxProbe>::Push(L, nullptr);
                                        return 0;
                                    })})
    {
        EXPECT_EQ(lua_cpcall(foreign.get(), use, nullptr), LUA_ERRRUN);
        EXPECT_STREQ(lua_tostring(foreign.get(), -1), "not a state of nxLuaEngine");
    }
}

TEST(nxLuaWrapper, AClearedPointerGivesNothing)
{
    nxProbeEngine engine;
    ASSERT_TRUE(nxLuaWrapper<nxProbe>::SetGlobal(engine, "cleared", nullptr));
    engine.ExpectRows({{"cleared:run()", ""},
                       {"cleared.first", "nil"},
                       {"cleared.first = 1", ""},
                       {"cleared.own = 2; return cleared.own", "2"}});
}

}  // namespace
