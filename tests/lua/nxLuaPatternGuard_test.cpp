#include "scriptFramework/lua/nxLuaPatternGuard.h"

#include <gtest/gtest.h>

#include <lua.hpp>

#include "base/threads/nxStackThread.h"
#include "tests/lua/nxProbe.h"

namespace {

constexpr const char* TooComplex = "error: pattern too complex";

// The deeper the stack, the longer the pattern; one that is too long for it raises, wherever the script runs.
TEST(nxLuaPatternGuard, ADeepPatternMatchesOrRaises)
{
    constexpr std::size_t small = std::size_t{2} << 20;
#ifdef LUAJIT_VERSION
    const char *const found = TooComplex, *const foundFew = TooComplex;  // by a bound of its own
#else
    const char *const found = "1 200000", *const foundFew = "1 9000";
#endif
    const std::tuple<std::size_t, const char*, const char*> rows[] = {
        {nxStackThread::ForScripts, "('x'):rep(2e5):find(('x?'):rep(2e5))", found},
        {nxStackThread::ForScripts, "(''):find(('x*'):rep(2e6))", TooComplex},
        {small, "('x'):rep(2e5):find(('x?'):rep(2e5))", TooComplex},
        {small, "(''):match(('x*'):rep(2e5))", TooComplex},
        {small, "(''):gsub(('x-'):rep(2e5), '', 1)", TooComplex},
        {small, "(string.gfind or string.gmatch)('', ('x*'):rep(2e5))()", TooComplex},
        {small, "('-'):rep(1e6):find(('-'):rep(1e6), 1, true)", "1 1000000"},
        {small, "('x'):rep(1e6):find(('x'):rep(1e6))", "1 1000000"},
        {small, "('x'):rep(9000):find(('x?'):rep(9000))", foundFew},
        {small, "('x'):find()", "error: bad argument #1 to 'find' (string expected, got no value)"},
    };
    for (const auto& [stack, code, expected] : rows) {
        SCOPED_TRACE(code);
        nxProbeEngine engine;
        std::string answer;
        nxStackThread::Run(stack, [&, code = code] { answer = engine.Evaluate(code); });
        EXPECT_EQ(answer, expected);
    }
}

}  // namespace
