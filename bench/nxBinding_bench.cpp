// What one event costs on its way into a script, beside the least that the raw C interface of the same Lua
// needs for it (peers/). Ratios of one run are what counts.
#include <benchmark/benchmark.h>

#include "bench/nxBenchJob.h"

namespace {

constexpr const char* Quiet = "function OnInit() end function OnPrice(price) end";
constexpr const char* OneRead = "function OnInit() end function OnPrice(price) local b = price.bidPrice end";
constexpr const char* OneCall = "function OnInit() end function OnPrice(price) local b = price:isBid() end";
// One method and three reads.
constexpr const char* Whole = R"(
function OnInit() end
function OnPrice(price)
  if price:isBid() then
    local mid = (price.bidPrice + price.askPrice) / 2
    local volume = price.bidVolume
  end
end)";
// The same with about 16 MB alive, which the collector has to walk.
constexpr const char* Heavy = R"(
function OnInit()
  held = {}
  for i = 1, 170000 do held[i] = { i, tostring(i) } end
end
function OnPrice(price)
  if price:isBid() then
    local mid = (price.bidPrice + price.askPrice) / 2
    local volume = price.bidVolume
  end
end)";

// Some 8,000 instructions, nearly nothing but Lua.
constexpr const char* Loop = R"(
function OnInit() end
function OnPrice(price)
  local sum = 0
  for i = 1, 2000 do sum = (sum + i * 3) % 1000 end
end)";

void OnPrice(benchmark::State& state, const char* script, bool isWatched = false)
{
    nxScriptPulse pulse;
    nxScriptLimits limits;
    if (isWatched) limits.instructions = 10000000;
    nxBenchJob job(script, limits, isWatched ? &pulse : nullptr);
    nxAlgoJobObject& object = job.GetObject();
    const auto before = object.GetMemory().GetAllocationCount();
    for (auto _ : state)
        benchmark::DoNotOptimize(object.OnPrice(job.GetPrice()));
    const auto allocations = object.GetMemory().GetAllocationCount() - before;
    state.counters["allocations"] =
        static_cast<double>(allocations) / static_cast<double>(state.iterations());
    state.counters["MB"] = static_cast<double>(object.GetMemory().GetBytesInUse()) / 1e6;
}

BENCHMARK_CAPTURE(OnPrice, push, Quiet);
BENCHMARK_CAPTURE(OnPrice, push_and_one_read, OneRead);
BENCHMARK_CAPTURE(OnPrice, push_and_one_call, OneCall);
BENCHMARK_CAPTURE(OnPrice, whole, Whole);
BENCHMARK_CAPTURE(OnPrice, whole_16MB_live, Heavy);
// With a limit of instructions and a pulse; and the same for a script that calculates.
BENCHMARK_CAPTURE(OnPrice, whole_watched, Whole, true);
BENCHMARK_CAPTURE(OnPrice, loop, Loop);
BENCHMARK_CAPTURE(OnPrice, loop_watched, Loop, true);

}  // namespace
