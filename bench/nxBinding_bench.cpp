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

void OnPrice(benchmark::State& state, const char* script)
{
    nxBenchJob job(script);
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

}  // namespace
