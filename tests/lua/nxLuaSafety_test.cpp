// No script may bring the binding to follow a pointer that is not its own, whatever it does to wrappers,
// metatables and the registry.

#include <gtest/gtest.h>

#include <lua.hpp>

#include "tests/lua/nxProbe.h"

namespace {

// What they answer to nonsense is of no matter, as long as it is nothing or an error.
TEST(nxLuaSafety, DispatchersCalledByHand)
{
    nxProbeEngine engine;
    engine.probe.other = nullptr;
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

// What the binding remembers of a wrapper goes with the table: neither another one at its address nor the
// same one with another object in it passes for what it was.
TEST(nxLuaSafety, AWrapperThatWasCalledIsForgottenWithItsTable)
{
    if (!nxLuaClass::MakesOnDemand()) GTEST_SKIP() << "nothing is remembered on this engine";
    nxProbeEngine engine;
    engine.probe.other = &engine.other;
    engine.probe.body = [](nxLuaParameters&, nxLuaResults& results) {
        results.Add("a probe");
        return true;
    };
    ASSERT_TRUE(engine.LoadText(R"lua(
run = probe.run
function address(value) return tostring(value) end
-- Calls a wrapper, drops it, and makes tables until one lies where it lay; nil when none does.
function replace(make)
  collectgarbage("stop")
  local wrapper = probe:again()
  local place = address(wrapper)
  wrapper:run()
  wrapper = nil
  collectgarbage("collect")
  local made = {}
  for i = 1, 1000 do
    made[i] = make()
    if address(made[i]) == place then return made[i] end
  end
end)lua"))
        << engine.GetLastError();
    EXPECT_EQ(
        engine.Evaluate("local t = replace(function() return {} end); return t ~= nil and run(t) == nil"),
        "true");
    EXPECT_EQ(engine.Evaluate("local o = replace(function() return probe:getOther() end); "
                              "return o ~= nil and o:twice()"),
              "84");
    EXPECT_EQ(engine.Evaluate("local w = probe:again(); w:run(); for k in pairs(w) do end; return w:run()"),
              "'a probe'");
    EXPECT_TRUE(
        engine.Evaluate("local w = probe:again(); w:run(); rawset(w, 0, nil); return run(w)").empty());
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
