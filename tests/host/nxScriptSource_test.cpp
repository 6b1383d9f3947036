#include "host/jobs/nxScriptSource.h"

#include "tests/host/nxHostFixture.h"
#include "tests/support/nxRowFile.h"

namespace {

// How a script fails while it is loaded or in OnInit: "message | source line", or "" when it does not.
std::string Fail(nxHostRun& run)
{
    run.AddQuotes("@00,A,1,1,,,,,\n");
    static_cast<void>(run.Run());
    if (run.statistics.jobs[0].failures.empty()) return run.err.substr(0, run.err.find("--- speed"));
    const nxScriptFailure& what = run.statistics.jobs[0].failures[0].what;
    return what.message + (what.location ? " | " + what.location->text : "");
}

std::string Fail(const std::string& script)
{
    nxHostRun run;
    run.SetScript(script);
    std::string text = Fail(run);
    // The location holds the path as it was given, folder and all.
    const std::size_t path = text.find("/script.lua:");
    return path == std::string::npos ? text : text.substr(path + 1);
}

std::string InOnInit(const std::string& statement)
{
    return "function OnInit()\n" + statement + "\nend\n";
}

std::string FailRow(const std::string& script)
{
    return Fail(script + "\n");
}

}  // namespace

TEST(nxScriptSource, TellsALineOfTheScriptAsTheAuthorCountsIt)
{
    nxExpectRows("host/failures.txt", FailRow);
    EXPECT_EQ(Fail("function OnInit()\r\n  error('x')\r\nend\r\n"), "script.lua:2: x | error('x')");
    EXPECT_EQ(Fail("#!/usr/bin/algoserver\nerror('x')"), "script.lua:2: x | error('x')");
}

TEST(nxScriptSource, TellsWhatStaysOpenAtTheEnd)
{
    nxExpectRows("host/failures.txt", FailRow);
}

TEST(nxScriptSource, KeepsTheScriptsOwnWordsWhateverTheyLookLike)
{
    nxExpectRows("host/failures.txt", FailRow);
}

// The engine takes every line for one of the script; a line of the prelude must not point there.
TEST(nxScriptSource, AnErrorInTheLibrarysOwnHelpersIsNotBlamedOnALineOfTheScript)
{
    const std::string padding(60, '\n');
    for (const std::string& script : {InOnInit("round(nil)"), InOnInit("round(nil)") + padding}) {
        const std::string told = Fail(script);
        EXPECT_TRUE(told.starts_with("prelude.lua:9: attempt to perform arithmetic")) << told;
    }
}

TEST(nxScriptSource, AnErrorInATextLoadedByTheScriptKeepsItsOwnLine)
{
    const std::string told =
        Fail("local load = loadstring\n" + InOnInit("load('\\n\\nlocal a = b.c', 'extra')()"));
    EXPECT_EQ(told, "[string \"extra\"]:3: attempt to index global 'b' (a nil value)");
}

TEST(nxScriptSource, TellsErrorsOfModulesInTheirOwnFileAndLine)
{
    const std::tuple<const char*, const char*, const char*, const char*, const char*> rows[] = {
        {"last line of the first", "\n\nerror('x')\n", "y = 1\n", "", "a.lua:3: x"},
        {"second behind one without newline", "y = 1", "\nerror('x')", "", "b.lua:2: x"},
        {"the end of an empty script behind what stays open", "", "function f()", "",
         "script.lua:1: 'end' expected (to close 'function' at line 1 of b.lua) near '<eof>'"},
        {"a module that stays open", "\nfunction f()\n", "", "y = 1\n",
         "script.lua:2: 'end' expected (to close 'function' at line 2 of a.lua) near '<eof>'"},
        {"what a module sets, the script has", "y = 1", "z = 2", "function OnInit() error(y + z) end",
         "script.lua:1: 3"},
    };
    for (const auto& [name, first, second, script, told] : rows) {
        SCOPED_TRACE(name);
        nxHostRun run;
        run.AddModule("a.lua", first);
        run.AddModule("b.lua", second);
        run.SetScript(script);
        static_cast<void>(Fail(run));
        EXPECT_EQ(run.GetErrors().substr(0, run.GetErrors().find('\n')), told);
    }
}

TEST(nxScriptSource, RefusesWhatIsNoScriptBeforeAnythingRuns)
{
    nxHostRun run;
    const std::string binary = std::string("local a\n") + '\0';
    const std::tuple<const char*, std::string, const char*> rows[] = {
        {"missing", run.Write("x", "") + ".lua", "x.lua: cannot open: No such file or directory\n"},
        {"precompiled", run.Write("luac.out", std::string("\x1bLua\x51\0", 6)),
         "luac.out: is a precompiled script; only Lua source text is run\n"},
        {"zero byte", run.Write("binary.lua", binary),
         "binary.lua:2: holds a zero byte, so it is no Lua source text\n"},
    };
    run.AddQuotes("@00,A,1,1,,,,,\n");
    for (const auto& [name, path, told] : rows) {
        SCOPED_TRACE(name);
        run.options.jobs.assign(1, {});
        run.options.jobs[0].script = path;
        EXPECT_EQ(run.Run(), nxRunResult::InputFailed);
        EXPECT_EQ(run.err, told);
        EXPECT_EQ(run.out, "");
    }
}
