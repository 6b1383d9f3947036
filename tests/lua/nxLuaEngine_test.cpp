#include "scriptFramework/lua/nxLuaEngine.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <lua.hpp>
#include <thread>

#include "tests/lua/nxProbe.h"
#include "tests/support/nxRowFile.h"

namespace {

#ifdef LUAJIT_VERSION
constexpr bool StackSurvivesLoads = false;  // there each load is a frame of its own
#else
constexpr bool StackSurvivesLoads = true;
#endif

// A file with the given bytes for the length of a test.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& content)
        : path(std::filesystem::temp_directory_path() / ("nxLuaEngine_test." + std::to_string(getpid())))
    {
        std::ofstream(path, std::ios::binary) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(path); }
    const std::filesystem::path path;
};

std::string TakeText(nxProbeEngine& engine)
{
    size_t length = 0;
    const char* text = lua_tolstring(engine._GetState(), -1, &length);
    return text == nullptr ? "" : std::string(text, length);
}

std::string CompileToBinary()
{
    nxProbeEngine engine;
    EXPECT_TRUE(engine.LoadText("dumped = string.dump(function() loaded = true end)"));
    lua_getglobal(engine._GetState(), "dumped");
    return TakeText(engine);
}

TEST(nxLuaEngine, LoadsTextAndTellsWhyNot)
{
    nxProbeEngine engine;
    const auto load = [&](const std::string& text) {
        const bool isLoaded = engine.LoadText(text);
        const std::string error = engine.GetLastError();
        EXPECT_EQ(isLoaded, error.empty());
        EXPECT_EQ(engine.LoadModule(text), isLoaded);
        EXPECT_EQ(engine.GetLastError(), error);
        return error;
    };
    nxExpectRows("lua/engine.txt", load);
    EXPECT_EQ(load(""), "");
    EXPECT_EQ(load("\nerror('boom')"), "[string \"...\"]:2: boom");
    EXPECT_TRUE(engine.LoadText("value = 2"));
    EXPECT_EQ(engine.GetLastError(), "");
}

TEST(nxLuaEngine, TellsLinesInTheAuthorsTerms)
{
    nxScriptHelper helper;
    helper.modules = {{"util", 50, 60}, {"late", 58, 65}, {"math", 61, 70}};
    helper.lineOffset = 100;
    nxProbeEngine plain;
    nxProbeEngine mapped;
    mapped.SetScriptHelper(helper);
    nxExpectRows("lua/engine.txt", [&](const std::string& message) {
        const std::string script = "error('" + message + "', 0)";
        const int top = lua_gettop(mapped._GetState());
        EXPECT_FALSE(plain.LoadModule(script));
        EXPECT_FALSE(mapped.LoadModule(script));
        EXPECT_EQ(lua_gettop(mapped._GetState()), top);
        const std::string told = plain.GetLastError();
        return told + (mapped.GetLastError() == told ? "" : " - " + mapped.GetLastError());
    });
    mapped.SetScriptHelper({});
    EXPECT_FALSE(mapped.LoadModule(std::string(56, '\n') + "local x = nil + 1"));
    EXPECT_EQ(mapped.GetLastError(), "[string \"...\"]:57: attempt to perform arithmetic on a nil value");
}

TEST(nxLuaEngine, AFailingFileLeavesItsMessageOnTheStackAlone)
{
    // message: a part of it; empty when the file loads
    const std::pair<const char*, const char*> rows[] = {
        {"loaded = true", ""},
        {"#!/usr/bin/lua\nloaded = true", ""},
        {"", ""},
        {"loaded = = 1", ":1: unexpected symbol near '='"},
        {"\nerror('boom')", ":2: boom"},
        {"# first\nerror('boom')", ":2: boom"},
        {"# first", ""},
    };
    for (const auto& [content, message] : rows) {
        SCOPED_TRACE(content);
        const TemporaryFile file(content);
        nxProbeEngine engine;
        const bool expected = *message == '\0';
        EXPECT_EQ(engine.LoadScript(file.path), expected);
        EXPECT_EQ(engine.GetLastError(), "");
        if (expected || !StackSurvivesLoads) continue;
        EXPECT_NE(TakeText(engine).find(message), std::string::npos) << TakeText(engine);
    }
    nxProbeEngine engine;
    EXPECT_FALSE(engine.LoadText("error('earlier')"));
    EXPECT_FALSE(engine.LoadScript("/no/such/file.lua"));
    EXPECT_EQ(engine.GetLastError(), "");
    if (StackSurvivesLoads) {
        EXPECT_EQ(TakeText(engine), "cannot open /no/such/file.lua: No such file or directory");
    }
    EXPECT_FALSE(engine.LoadScript(std::filesystem::temp_directory_path()));
}

// What can be read once only loads whole, and what is looked through for binary chunks is what is loaded.
TEST(nxLuaEngine, LoadsFromAPipe)
{
    const TemporaryFile place("");
    std::filesystem::remove(place.path);
    ASSERT_EQ(mkfifo(place.path.c_str(), 0600), 0);
    for (const std::string& content :
         {"loaded = #[[" + std::string(100000, 'x') + "]]", std::string("\033Lua")}) {
        std::thread writer([&] { std::ofstream(place.path, std::ios::binary) << content; });
        nxProbeEngine engine;
        EXPECT_EQ(engine.LoadScript(place.path), content[0] != '\033');
        writer.join();
        EXPECT_EQ(engine.GetGlobalNumber("loaded"), content[0] == '\033' ? 0 : 100000);
    }
}

TEST(nxLuaEngine, RefusesBinaryChunks)
{
    const std::string binary = CompileToBinary();
    ASSERT_EQ(binary.substr(0, 2), "\033L");
    const std::pair<const char*, std::string> rows[] = {
        {"plain", binary},
        {"after a # line", "#!/usr/bin/lua\n" + binary},
        {"after a byte order mark", "\xEF\xBB\xBF" + binary},
        {"the mark alone", "\033"},
    };
    for (const auto& [name, content] : rows) {
        SCOPED_TRACE(name);
        nxProbeEngine engine;
        EXPECT_FALSE(engine.LoadText(content));
        EXPECT_EQ(engine.GetLastError(), "binary chunks are not accepted");
        EXPECT_FALSE(engine.LoadModule(content));
        EXPECT_EQ(engine.GetLastError(), "binary chunks are not accepted");
        const TemporaryFile file(content);
        EXPECT_FALSE(engine.LoadScript(file.path));
        EXPECT_EQ(engine.GetLastError(), "");
        if (StackSurvivesLoads) {
            EXPECT_EQ(TakeText(engine), "binary chunks are not accepted");
        }
        EXPECT_EQ(engine.Evaluate("loaded"), "nil");
    }
}

TEST(nxLuaEngine, ReadsAndRemovesGlobals)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText("number = 2.5; text = '0x10'; word = 'x'; function f() end"));
    const std::tuple<const char*, double, bool> rows[] = {
        {"number", 2.5, false}, {"text", 16, false}, {"f", 0, true}, {"print", 0, true}, {"none", 0, false}};
    for (const auto& [name, number, isFunction] : rows) {
        SCOPED_TRACE(name);
        const int top = lua_gettop(engine._GetState());
        EXPECT_EQ(engine.GetGlobalNumber(name), number);
        EXPECT_EQ(lua_gettop(engine._GetState()), top);
        EXPECT_EQ(engine.DoesFunctionExist(name), isFunction);
        engine.RemoveFunction(name);
        EXPECT_FALSE(engine.DoesFunctionExist(name));
        EXPECT_EQ(engine.Evaluate(name), "nil");
    }
}

TEST(nxLuaEngine, LoadsAndCallsOverAndOverOnOneStack)
{
    nxProbeEngine engine;
    for (int i = 0; i < 5000; ++i)
        ASSERT_TRUE(engine.LoadText("function OnX() x = (x or 0) + 1 end")) << i;
    nxLuaFunction function(engine, "OnX");
    for (int i = 0; i < 100000; ++i)
        ASSERT_TRUE(function.Call()) << i;
    EXPECT_EQ(engine.GetGlobalNumber("x"), 100000);
}

// A main chunk's results stay on the stack, which holds about 8000 values.
TEST(nxLuaEngine, ResultsOfAMainChunkDoNotStandInTheWayOfCalls)
{
    for (const int count : {1, 7000, 7900, 7950, 7960}) {
        SCOPED_TRACE(count);
        nxProbeEngine engine;
        ASSERT_TRUE(engine.LoadText("t = {} for i = 1, " + std::to_string(count) + " do t[i] = i end"));
        const int top = lua_gettop(engine._GetState());
        ASSERT_TRUE(engine.LoadText("function OnX(a) x = a end return unpack(t)")) << engine.GetLastError();
        if (StackSurvivesLoads) {
            ASSERT_GE(lua_gettop(engine._GetState()), top + count);
        }
        nxLuaFunction function(engine, "OnX");
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(function.Call("7")) << engine.GetLastError();
        EXPECT_TRUE(engine.LoadText("y = 2")) << engine.GetLastError();
        EXPECT_TRUE(function.Call("8")) << engine.GetLastError();
        EXPECT_EQ(engine.GetGlobalNumber("x"), 8);
    }
}

}  // namespace
