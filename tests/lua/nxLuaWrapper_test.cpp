#include "scriptFramework/lua/nxLuaWrapper.h"

#include <gtest/gtest.h>

#include <lua.hpp>

#include "tests/lua/nxProbe.h"

namespace {

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

}  // namespace
