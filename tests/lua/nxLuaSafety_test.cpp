// No script may bring the binding to follow a pointer that is not its own, whatever it does to wrappers,
// metatables and the registry.

#include <gtest/gtest.h>

#include <lua.hpp>

#include "tests/lua/nxProbe.h"

namespace {

constexpr const char* wrongTable = "error: bad argument #1 to '?' (nxProbe expected, got table)";

TEST(nxLuaSafety, SpoiltWrappersAndMetatables)
{
    const std::pair<const char*, const char*> rows[] = {
        // Something else at key 0.
        {"rawset(probe, 0, nil); return probe:run()", ""},
        {"rawset(probe, 0, nil); return probe.first", wrongTable},
        {"rawset(probe, 0, nil); probe.first = 1", wrongTable},
        {"rawset(probe, 0, newproxy(true)); return probe.first", wrongTable},
        {"rawset(probe, 0, io.stdout); return probe:run()", wrongTable},
        {"rawset(probe, 0, other[0]); return probe:run()", wrongTable},
        {"rawset(probe, 0, other[0]); return probe.first", wrongTable},
        {"rawset(probe, 0, other[0]); probe.first = 1", wrongTable},
        {"debug.setmetatable(other[0], getmetatable(probe)); rawset(probe, 0, other[0]); return probe.first",
         wrongTable},
        {"local p = newproxy(); debug.setmetatable(p, getmetatable(probe)); rawset(probe, 0, p); return "
         "probe.first",
         wrongTable},
        {"local f = io.stdout; local m = debug.getmetatable(f); debug.setmetatable(f, getmetatable(probe)); "
         "rawset(probe, 0, f); local ok, text = pcall(function() return probe.first end); "
         "debug.setmetatable(f, m); return ok, text",
         "false 'row:1: bad argument #1 to '?' (nxProbe expected, got table)'"},
        {"setmetatable(probe, getmetatable(other)); return probe.value",
         "error: bad argument #1 to '?' (nxOther expected, got table)"},
        {"local t = {[0] = probe[0]}; return probe.run(t)", ""},
        // The userdata in the wrapper's place.
        {"probe[0].first", "error: bad argument #1 to '?' (nxProbe expected, got userdata)"},
        {"probe[0].first = 1", "error: bad argument #1 to '?' (nxProbe expected, got userdata)"},
        // Rows that a script has changed.
        {"getmetatable(probe).first = 1e6; return probe.first", "nil"},
        {"getmetatable(probe).first = 1e300; return probe.first", "1"},
        {"getmetatable(probe).first = 1.5; return probe.first", "'fixed'"},
        {"getmetatable(probe).readOnly = 0/0; return probe.readOnly", "1"},
        {"getmetatable(probe).first = {}; return probe.first", "nil"},
        {"getmetatable(probe).first = 1e6; probe.first = 3; return rawget(probe, 'first')", "nil"},
        {"getmetatable(probe).readOnly = 0; probe.readOnly = 3; return probe.first", "3"},
    };
    for (const auto& [code, expected] : rows) {
        SCOPED_TRACE(code);
        nxProbeEngine engine;
        EXPECT_EQ(engine.Evaluate(code), expected);
    }
}

// What they answer to nonsense is of no matter, as long as it is nothing or an error.
TEST(nxLuaSafety, DispatchersCalledByHand)
{
    nxProbeEngine engine;
    EXPECT_EQ(engine.Evaluate("m = getmetatable(probe); return m.__index(probe, 'first', 3)"), "1");
    EXPECT_EQ(engine.Evaluate("m.__newindex(probe, 'mine', 4); return probe.mine"), "4");
    EXPECT_EQ(engine.Evaluate("m.__newindex(probe, 'first', 3); return probe.first"), "3");
    // Not every Lua engine lets a script change the row behind a function.
    for (const char* row : {"1e6", "-1", "0/0", "{}", "nil"}) {
        const std::string answer =
            engine.Evaluate("local o = probe:again(); debug.setupvalue(o.getOther, 1, " + std::string(row) +
                            "); return o:getOther()");
        EXPECT_TRUE(answer.empty() || answer == "nil") << row << ": " << answer;
    }
    const char* const argumentLists[] = {"",
                                         "nil",
                                         "5",
                                         "'text', 'len'",
                                         "{}, 'first'",
                                         "{}, 'first', 1",
                                         "nil, 'first', 1",
                                         "other, 'value'",
                                         "other, 'value', 1",
                                         "other[0], 'value', 1",
                                         "probe[0], 'first', 1",
                                         "io.stdout, 'first', 1",
                                         "newproxy(m.__gc), 'first'",
                                         "setmetatable({}, m), 'first', 1",
                                         "setmetatable({[0]=other[0]}, m), 'first'",
                                         "setmetatable({[0]=io.stdout}, m), 'first', 1"};
    for (const char* function : {"m.__index", "m.__newindex", "m.__gc", "probe.run", "probe.again"}) {
        for (const char* arguments : argumentLists) {
            const std::string code = std::string(function) + "(" + arguments + ")";
            SCOPED_TRACE(code);
            const std::string answer = engine.Evaluate(code);
            EXPECT_TRUE(answer.empty() || answer == "nil" || answer.starts_with("error: ")) << answer;
        }
    }
    EXPECT_EQ(engine.probe.first, 3.0);
    EXPECT_EQ(engine.other.value, 42.0);
}

TEST(nxLuaSafety, EachPushSetsTheRowsRight)
{
    const char* spoilers[] = {
        "getmetatable(probe).first = 1",
        "getmetatable(probe).first = nil",
        "debug.getmetatable(probe[0]).first = 'x'",
        "debug.getregistry().nxProbe.first = {}",
        "for _, v in pairs(debug.getregistry()) do if type(v) == 'table' then rawset(v, 'first', nil) end "
        "end",
    };
    for (const char* spoiler : spoilers) {
        SCOPED_TRACE(spoiler);
        nxProbeEngine engine;
        EXPECT_EQ(engine.Evaluate(spoiler), "");
        EXPECT_EQ(engine.Evaluate("probe:again().first, probe.first"), "1 1");
    }
    // A script that took the metatable once changes it later, without asking anew.
    nxProbeEngine engine;
    EXPECT_EQ(engine.Evaluate("m = getmetatable(probe); return probe:again().first"), "1");
    EXPECT_EQ(engine.Evaluate("m.first = 1; local spoilt = probe.first; return spoilt, probe:again().first"),
              "'fixed' 1");
}

// Puts a value in place of all registry entries whose key is of a type, or of any.
std::string SpoilRegistry(const std::string& keyType, const std::string& value)
{
    return "local wanted, value = '" + keyType + "', " + value + R"lua(
local registry, keys = debug.getregistry(), {}
for key in pairs(registry) do
  if type(key) == wanted or wanted == "any" then keys[#keys + 1] = key end
end
for i = 1, #keys do registry[keys[i]] = value end
)lua";
}

// The engine goes on from any registry: an entry may fail with a text, and nothing worse happens.
TEST(nxLuaSafety, SpoiltRegistry)
{
    for (const char* keyType : {"number", "string", "any"}) {
        for (const char* value :
             {"nil", "5", "{}", "type", "newproxy(true)", "getmetatable(other)",
              "coroutine.create(function() end)", "setmetatable({}, {__index = error, __newindex = error})"})
        {
            SCOPED_TRACE(std::string(keyType) + " keys become " + value);
            nxProbeEngine engine;
            ASSERT_TRUE(
                engine.LoadText("function OnX(o) if o then seen = o.first; o.first = 2; o:run() end end"));
            nxLuaFunction function(engine, "OnX");
            EXPECT_TRUE(function.Call(engine.probe));
            ASSERT_TRUE(engine.LoadText(SpoilRegistry(keyType, value))) << engine.GetLastError();
            const auto expectToldWhy = [&engine](bool succeeded) {
                EXPECT_EQ(engine.GetLastError().empty(), succeeded) << engine.GetLastError();
            };
            for (int i = 0; i < 3; ++i) {
                expectToldWhy(function.Call(engine.probe));
                expectToldWhy(engine.LoadText("x = 1"));
                expectToldWhy(engine.LoadText("probe:again():run()"));
                static_cast<void>(engine.DoesFunctionExist("OnX"));
                static_cast<void>(engine.GetGlobalNumber("seen"));
                engine.RemoveFunction("other");
            }
        }
    }
}

TEST(nxLuaSafety, ARegistryThatRaisesFailsTheLoadWithItsText)
{
    nxProbeEngine engine;
    ASSERT_TRUE(
        engine.LoadText("debug.getregistry().nxProbe = nil; "
                        "debug.setmetatable(debug.getregistry(), {__index = function() error('gone', 0) end, "
                        "__newindex = function() error('closed', 0) end})"));
    const bool loaded = engine.LoadText("x = 1");  // by an engine that reaches its registry past metamethods
    EXPECT_EQ(engine.GetLastError(), loaded ? "" : "gone");
    EXPECT_FALSE(engine.LoadScript("/no/such/file"));
    EXPECT_EQ(engine.Evaluate("debug.setmetatable(debug.getregistry(), nil) ~= nil"), "true");
    EXPECT_TRUE(engine.LoadText("x = 1")) << engine.GetLastError();
}

// The io library may know its files by a metatable, which debug lets a script exchange: an object passed off
// as one reads as a closed file there, and as none where the library knows better.
TEST(nxLuaSafety, AnObjectPassedOffAsAFileIsNoOpenOne)
{
    const std::pair<const char*, const char*> rows[] = {
        {"debug.setmetatable(probe[0], debug.getmetatable(io.stdout)); return io.type(probe[0])",
         "'closed file'"},
        {"debug.setmetatable(probe[0], debug.getmetatable(io.stdout)); return probe[0]:write('x')",
         "error: attempt to use a closed file"},
        {"debug.getregistry()['FILE*'] = getmetatable(probe); return io.stdout.close(probe[0])",
         "error: attempt to use a closed file"},
        {"debug.setmetatable(probe[0], debug.getmetatable(io.stdout)); probe[0] = nil; collectgarbage()", ""},
    };
    for (const auto& [code, expected] : rows) {
        nxProbeEngine engine;
        const std::string answer = engine.Evaluate(code);
        EXPECT_TRUE(answer == expected || answer == "nil" ||
                    answer.find("FILE* expected") != std::string::npos)
            << code << ": " << answer;
    }
}

}  // namespace
