#include "scriptFramework/lua/nxScriptSampler.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <lua.hpp>
#include <map>

#include "scriptFramework/lua/nxLuaFunction.h"
#include "scriptFramework/lua/nxScriptHeap.h"
#include "tests/lua/nxProbe.h"

namespace {

constexpr const char* Script = R"(
function once() for i = 1, 100 do x = i end end
function thrice() for i = 1, 300 do x = i end end
function OnTick()
  once() thrice()
  probe:run(1)
  pcall(string.rep, 'x', 3)
  local ran = coroutine.wrap(function() once() coroutine.yield() once() end)
  ran() ran()
end)";
constexpr unsigned int Calls = 200;

struct Sum
{
    unsigned long long instructions = 0, calls = 0;
    bool operator==(const Sum&) const = default;
};

// By the functions on the stack and the line of the innermost: "OnTick > OnTick > once:2".
std::map<std::string, Sum> Sample(unsigned int interval)
{
    nxScriptSampler sampler(interval);
    nxProbeEngine engine;
    engine.SetSampler(&sampler);
    EXPECT_TRUE(engine.LoadText(Script)) << engine.GetLastError();
    nxLuaFunction function(engine, "OnTick");
    for (unsigned int i = 0; i < Calls; ++i) {
        sampler.Begin("OnTick");
        EXPECT_TRUE(function.Call()) << engine.GetLastError();
        EXPECT_GT(sampler.End(), 0);
    }
    sampler.Finish();
    std::map<std::string, Sum> sums;
    std::vector<std::string> paths;
    for (const nxScriptSampler::Node& node : sampler.GetNodes()) {
        const std::string& name = sampler.GetFunctions()[node.function].name;
        const std::string line = node.line == 0 ? "" : ":" + std::to_string(node.line);
        paths.push_back(node.parent == 0 ? name : paths[node.parent] + " > " + name + line);
        sums[paths.back()].instructions += node.instructions;
        sums[paths.back()].calls += node.calls;
        EXPECT_GE(node.nanoseconds, 0);
    }
    return sums;
}

TEST(nxScriptSampler, GivesInstructionsToTheLinesThatRun)
{
    const std::map<std::string, Sum> exact = Sample(1);
    const auto in = [](const std::map<std::string, Sum>& sums, const std::string& path) {
        const auto found = sums.find("OnTick > " + path);
        return found == sums.end() ? 0.0 : static_cast<double>(found->second.instructions) / Calls;
    };
    const double loop = in(exact, ":5 > once:2");
    EXPECT_GT(loop, 200);
    EXPECT_NEAR(in(exact, ":5 > thrice:3"), 3 * loop, 20);  // but for the beginning and the end
    const auto sampled = Sample(97);
    EXPECT_EQ(sampled, Sample(97));
    EXPECT_NEAR(in(sampled, ":5 > once:2"), loop, 0.05 * loop);
    EXPECT_NEAR(in(sampled, ":5 > thrice:3"), 3 * loop, 0.05 * 3 * loop);
#ifndef LUAJIT_VERSION
    const std::string wrapped = ":9 > ran > :8 > once:2";
    EXPECT_EQ(in(exact, wrapped), 2 * loop);
    EXPECT_EQ(exact.at("OnTick").calls, Calls);
    EXPECT_EQ(exact.at("OnTick > :6 > nxProbe:run").calls, Calls);
    EXPECT_EQ(exact.at("OnTick > :7 > pcall > string.rep").calls, Calls);
#endif
}

TEST(nxScriptSampler, LeavesLimitsAsTheyAre)
{
    const auto fails = [](unsigned int interval, unsigned int limit) {
        nxScriptSampler sampler(interval);
        nxProbeEngine engine;
        engine.SetLimits({.instructions = limit});
        if (interval != 0) engine.SetSampler(&sampler);
        EXPECT_TRUE(engine.LoadText("function f() for i = 1, 10000 do x = i end end"));
        nxLuaFunction function(engine, "f");
        bool hasFailed = false;
        for (int i = 0; i < 10; ++i)
            hasFailed = !function.Call() || hasFailed;
        return hasFailed;
    };
    for (const unsigned int interval : {0u, 1u, 97u, 997u}) {
        EXPECT_TRUE(fails(interval, 10'000)) << interval;
        EXPECT_FALSE(fails(interval, 40'000)) << interval;
    }
}

TEST(nxScriptHeap, FindsWhatGrowsOnItsPath)
{
    nxProbeEngine engine;
    ASSERT_TRUE(engine.LoadText(R"(
book = {bids = {}}
local seen, keyed = {}, {}
thread = coroutine.create(function() local waiting = {} for i = 1, 1000 do waiting[i] = {} end coroutine.yield(waiting) end)
coroutine.resume(thread)
function grow()
  for i = 1, 1000 do
    book.bids[#book.bids + 1] = {price = i, size = i}
    keyed['key' .. #book.bids] = {}
    seen[#seen + 1] = i
  end
end)")) << engine.GetLastError();
    const auto read = [&engine] {
        nxScriptHeap heap;
        EXPECT_TRUE(engine.ReadHeap(heap)) << engine.GetLastError();
        std::map<std::string, nxScriptHeap::Path> paths;
        for (const nxScriptHeap::Path& path : heap.paths)
            paths[path.name] = path;
        std::size_t sum = 0;
        for (const nxScriptHeap::Sum& kind : heap.kinds)
            sum += kind.bytes;
        EXPECT_LT(sum, heap.bytes * 5 / 4);
        EXPECT_GT(sum, heap.bytes / 2);
        return std::pair(heap.bytes, paths);
    };
    nxLuaFunction grow(engine, "grow");
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(grow.Call());
    auto [bytesBefore, before] = read();
    ASSERT_TRUE(grow.Call());
    auto [bytes, now] = read();
    const std::pair<const char*, std::size_t> rows[] = {{"_G.book.bids", 5000},
                                                        {"_G.grow: keyed", 5000},
                                                        {"_G.grow: seen", 5000},
                                                        {"_G.thread: waiting", 1000}};
    std::size_t grown = 0;
    for (const auto& [path, entries] : rows) {
        ASSERT_TRUE(now.contains(path)) << path;
        EXPECT_EQ(now[path].entries, entries) << path;
        EXPECT_EQ(now[path].bytes > before[path].bytes, entries == 5000) << path;
        grown += now[path].bytes - before[path].bytes;
    }
    EXPECT_NEAR(static_cast<double>(grown), static_cast<double>(bytes - bytesBefore),
                0.25 * static_cast<double>(grown));
}

}  // namespace
