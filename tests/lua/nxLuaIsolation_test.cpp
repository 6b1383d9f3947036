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
    EXPECT_EQ(plain.Evaluate("math.randomseed(1); return type(math.random())"), "'number'");
    EXPECT_EQ(a.Evaluate("math.randomseed(8.9)"), "");
    EXPECT_EQ(b.Evaluate(Draw), First);  // neither has moved it
    b.Isolate(8);
    EXPECT_EQ(b.Evaluate(Draw), Second);
    EXPECT_EQ(a.Evaluate(Draw), Second);
}

}  // namespace
