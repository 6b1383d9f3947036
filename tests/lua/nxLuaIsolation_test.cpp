#include "scriptFramework/lua/nxLuaIsolation.h"

#include <gtest/gtest.h>

#include "tests/lua/nxProbe.h"

namespace {

constexpr const char* Draw = "math.random(1000), math.random(-3, -1), math.random()";
constexpr const char* First = "16 -3 0.4644475586931";
constexpr const char* Second = "530 -1 0.029713089293909";

TEST(nxLuaIsolation, EachStateDrawsFromItsOwnGenerator)
{
    nxProbeEngine a, b, plain;
    a.Isolate(7);
    b.Isolate(7);
    EXPECT_EQ(a.Evaluate(Draw), First);
    plain.ExpectRows({{"math.randomseed(1); return type(math.random())", "'number'"}});
    EXPECT_EQ(a.Evaluate("math.randomseed(8.9)"), "");
    EXPECT_EQ(b.Evaluate(Draw), First);  // neither has moved it
    b.Isolate(8);
    EXPECT_EQ(b.Evaluate(Draw), Second);
    EXPECT_EQ(a.Evaluate(Draw), Second);
}

TEST(nxLuaIsolation, RandomNumbersLieWhereLuaPutsThem)
{
    nxProbeEngine engine;
    engine.Isolate(1);
    engine.ExpectRows({
        {"local seen = 0; for i = 1, 1000 do local x = math.random(); if x >= 0 and x < 1 then seen = seen + "
         "1 end end "
         "return seen",
         "1000"},
        {"local seen = {}; for i = 1, 200 do seen[math.random(-1, 1)] = true end "
         "return seen[-2], seen[-1], seen[0], seen[1], seen[2]",
         "nil true true true nil"},
        {"math.random(1), math.random(5.9, 5), math.random('3', 3), math.random(2 ^ 32 + 4, 4)", "1 5 3 4"},
        {"math.random(-2 ^ 31, 2 ^ 31 - 1) ~= math.random(-2 ^ 31, 2 ^ 31 - 1)", "true"},
        {"math.random(0)", "error: bad argument #1 to 'random' (interval is empty)"},
        {"math.random(2 ^ 31)", "error: bad argument #1 to 'random' (interval is empty)"},
        {"math.random(2, 1)", "error: bad argument #2 to 'random' (interval is empty)"},
        {"math.random(1, 2, 3)", "error: wrong number of arguments"},
        {"math.random('x')", "error: bad argument #1 to 'random' (number expected, got string)"},
        {"math.randomseed()", "error: bad argument #1 to 'randomseed' (number expected, got no value)"},
    });
}

TEST(nxLuaIsolation, TheLocaleIsOnlyTold)
{
    nxProbeEngine engine;
    engine.Isolate(1);
    engine.ExpectRows(
        {{"os.setlocale(), os.setlocale(nil, 'numeric')", "'C' 'C'"},
         {"os.setlocale(''), os.setlocale('C', 'numeric')", "nil nil"},
         {"os.setlocale(nil, 'x')", "error: bad argument #2 to 'setlocale' (invalid option 'x')"}});
}

}  // namespace
