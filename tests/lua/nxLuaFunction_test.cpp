#include "scriptFramework/lua/nxLuaFunction.h"

#include <gtest/gtest.h>

#include "tests/lua/nxProbe.h"
#include "tests/support/nxRowFile.h"

namespace {

TEST(nxLuaFunction, WhetherItExistsIsAskedOnceOnly)
{
    nxProbeEngine engine;
    nxLuaFunction late(engine, "late");
    EXPECT_FALSE(late.IsValid());
    ASSERT_TRUE(engine.LoadText("calls = 0; function late() calls = calls + 1 end; early = late"));
    EXPECT_FALSE(late.IsValid());
    EXPECT_TRUE(late.Call());
    EXPECT_EQ(engine.GetGlobalNumber("calls"), 0);

    nxLuaFunction early(engine, "early");
    EXPECT_TRUE(early.Call());
    EXPECT_EQ(engine.GetGlobalNumber("calls"), 1);
    engine.RemoveFunction("early");
    EXPECT_TRUE(early.IsValid());
    EXPECT_FALSE(early.Call());
    EXPECT_EQ(engine.GetLastError(), "attempt to call a nil value");
    // It is bound to the name: whatever bears it now is called.
    ASSERT_TRUE(engine.LoadText("function early() calls = 10 end"));
    EXPECT_TRUE(early.Call());
    EXPECT_EQ(engine.GetGlobalNumber("calls"), 10);
}

// A host may deliver an event while the script handles another.
TEST(nxLuaFunction, AnObjectEndsWithItsOwnEventAndNotWithOneInside)
{
    nxProbeEngine engine;
    nxLuaFunction function(engine, "OnX");
    engine.probe.body = [&](auto&, auto&) { return function.Call(engine.other); };
    ASSERT_TRUE(
        engine.LoadText("depth, alive, over, kept = 0, 0, 0, {} "
                        "function OnX(it) depth = depth + 1 kept[depth] = it "
                        "if depth < 40 then probe:run() end if it.value == 42 then alive = alive + 1 end end "
                        "function count() for _, it in ipairs(kept) do "
                        "if it.value == nil and not pcall(it.twice, it) then over = over + 1 end end end"));
    EXPECT_TRUE(function.Call(engine.other));
    EXPECT_EQ(engine.GetGlobalNumber("alive"), 40);
    EXPECT_TRUE(engine.LoadText("count()"));
    EXPECT_EQ(engine.GetGlobalNumber("over"), 40);
    EXPECT_EQ(engine.Evaluate("other.value, probe:getOther().value"), "42 42");  // which no event brought
}

// The same for functions that only read their objects, one of which each call is about.
TEST(nxLuaFunction, AnObjectThatIsOnlyReadIsThatOfItsCall)
{
    nxProbeEngine engine;
    nxProbe objects[3];
    nxLuaFunction function(engine, "OnX");
    int depth = 0;
    engine.probe.body = [&](auto&, auto&) { return depth == 3 || function.Call(objects[depth++]); };
    for (int i = 0; i < 3; ++i)
        objects[i].first = i;
    ASSERT_TRUE(engine.LoadText(
        "told = '' function OnX(it) local before = it.first probe:run() "
        "told = told .. before .. it.first if it:again().first ~= before then error() end end"));
    EXPECT_TRUE(engine.LoadText("probe:run()")) << engine.GetLastError();
    EXPECT_EQ(engine.Evaluate("told"), "'221100'");
    ASSERT_TRUE(
        engine.LoadText("function OnX(it) if it ~= nil and not it.unknown then sum = it.first + 1 end end"));
    EXPECT_TRUE(function.Call(objects[1]));
    const auto before = engine.GetMemory().GetAllocationCount();
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(function.Call(objects[1]));
    if (nxLuaClass::MakesOnDemand()) {
        EXPECT_EQ(engine.GetMemory().GetAllocationCount(), before);
    }
}

TEST(nxLuaFunction, PassesItsArgumentsInOrder)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText(
        "function f(...) args = select('#', ...) .. ':' .. table.concat({...}, ',') end "
        "function g(object) object.first = object.first + 1; args = select('#', object) end"));
    nxLuaFunction f(engine, "f");
    EXPECT_TRUE(f.Call());
    EXPECT_EQ(engine.Evaluate("args"), "'0:'");
    EXPECT_TRUE(f.Call("a", "b", "c"));
    EXPECT_EQ(engine.Evaluate("args"), "'3:a,b,c'");
    EXPECT_TRUE(f.Call(4294967295u, "b"));
    EXPECT_EQ(engine.Evaluate("args"), "'2:4294967295,b'");
    nxLuaFunction g(engine, "g");
    EXPECT_TRUE(g.Call(engine.probe));
    EXPECT_EQ(engine.probe.first, 2.0);
}

// An object is pushed for those that can see it only; whichever function bears the name now decides.
TEST(nxLuaFunction, AnObjectReachesEveryFunctionThatCanTell)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText("seen = 0; function f() seen = seen + 1 end"));
    nxLuaFunction f(engine, "f");
    nxExpectRows("lua/engine.txt", [&](const std::string& definition) {
        engine.probe.first = 7;
        EXPECT_TRUE(engine.LoadText(definition) && f.Call(engine.probe)) << engine.GetLastError();
        return engine.Evaluate("seen");
    });
}

// A function that can only read its argument is lent the same wrapper each time, and must not be able to
// tell.
TEST(nxLuaFunction, WhatIsKeptOfAnArgumentIsItsOwn)
{
    nxExpectRows("lua/engine.txt", [](const std::string& definition) {
        nxProbeEngine engine;
        EXPECT_TRUE(engine.LoadText("kept = {} function keep(value) kept[#kept + 1] = value end"));
        EXPECT_TRUE(engine.LoadText(definition)) << engine.GetLastError();
        nxLuaFunction f(engine, "f");
        for (int i = 0; i < 2; ++i)
            EXPECT_TRUE(f.Call(engine.probe)) << definition << ": " << engine.GetLastError();
        return engine.Evaluate("#kept .. (rawequal(kept[1], kept[2]) and ' shared' or ' own')");
    });
}

TEST(nxLuaFunction, OnlyAFunctionCounts)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText("a = 1; b = setmetatable({}, {__call = function() called = 1 end})"));
    for (const char* name : {"a", "b"}) {
        nxLuaFunction function(engine, name);
        EXPECT_FALSE(function.IsValid()) << name;
        EXPECT_TRUE(function.Call()) << name;
    }
    EXPECT_EQ(engine.Evaluate("called"), "nil");
}

// A look-up that raised has found nothing out, so the next one asks again.
TEST(nxLuaFunction, ARaisingLookUpFailsTheCallAndIsRepeated)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText("setmetatable(_G, {__index = function() error('boo', 0) end})"));
    nxLuaFunction function(engine, "OnX");
    EXPECT_FALSE(function.IsValid());
    EXPECT_EQ(engine.GetLastError(), "boo");
    EXPECT_FALSE(function.Call());
    EXPECT_EQ(engine.GetLastError(), "boo");
    EXPECT_FALSE(engine.DoesFunctionExist("OnX"));
    EXPECT_EQ(engine.GetGlobalNumber("none"), 0.0);
    ASSERT_TRUE(engine.LoadText("setmetatable(_G, nil); calls = 0; function OnX() calls = calls + 1 end"));
    EXPECT_TRUE(function.Call());
    EXPECT_EQ(engine.GetGlobalNumber("calls"), 1);
}

}  // namespace
