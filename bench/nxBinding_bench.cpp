// What one event costs on its way into a script, beside the least that the raw C interface of the same Lua
// needs for it (peers/). Ratios of one run are what counts.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "base/records/nxMarketDepth.h"
#include "base/records/nxTickData.h"
#include "bench/nxBenchJob.h"
#include "bench/nxBenchScripts.h"
#include "scriptFramework/analytics/nxAlgoTickDataObject.h"
#include "scriptFramework/market/nxAlgoMarketDepthObject.h"
#include "scriptFramework/market/nxAlgoPositionObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"

namespace {

const std::string OnInit = "total = 0 function OnInit() end ";

// Delivers one event again and again.
template <class Deliver>
void Run(benchmark::State& state, nxBenchJob& job, Deliver deliver)
{
    const nxLuaPool& memory = job.GetObject().GetMemory();
    const auto before = memory.GetAllocationCount();
    for (auto _ : state)
        benchmark::DoNotOptimize(deliver());
    const auto allocations = memory.GetAllocationCount() - before;
    state.counters["allocations"] =
        static_cast<double>(allocations) / static_cast<double>(state.iterations());
    state.counters["MB"] = static_cast<double>(memory.GetBytesInUse()) / 1e6;
}

void OnPrice(benchmark::State& state, const std::string& script, bool isWatched = false)
{
    nxScriptPulse pulse;
    nxScriptLimits limits;
    if (isWatched) limits.instructions = 10000000;
    nxBenchJob job(OnInit + script, limits, isWatched ? &pulse : nullptr);
    Run(state, job, [&] { return job.GetObject().OnPrice(job.GetPrice()); });
}

BENCHMARK_CAPTURE(OnPrice, push, "function OnPrice(price) end");
BENCHMARK_CAPTURE(OnPrice, push_and_one_read, "function OnPrice(price) local b = price.bidPrice end");
BENCHMARK_CAPTURE(OnPrice, push_and_one_call, "function OnPrice(price) local b = price:isBid() end");
BENCHMARK_CAPTURE(OnPrice, whole, nxBenchScripts::Whole);
BENCHMARK_CAPTURE(OnPrice, whole_16MB_live, nxBenchScripts::GetHeap(170000) + nxBenchScripts::Whole);
// Hands its price on to a function, so that each event needs an object of its own.
BENCHMARK_CAPTURE(OnPrice, kept, nxBenchScripts::Kept);
BENCHMARK_CAPTURE(OnPrice, kept_16MB_live, nxBenchScripts::GetHeap(170000) + nxBenchScripts::Kept);
// With a limit of instructions and a pulse; and the same for a script that calculates.
BENCHMARK_CAPTURE(OnPrice, whole_watched, nxBenchScripts::Whole, true);
BENCHMARK_CAPTURE(OnPrice, loop, nxBenchScripts::Loop);
BENCHMARK_CAPTURE(OnPrice, loop_watched, nxBenchScripts::Loop, true);

// The other events of which scripts get many. Each with five reads or calls and an addition.

void OnMarketDepth(benchmark::State& state, const char* read)
{
    nxMarketDepth levels;
    for (int i = 1; i <= 5; ++i) {
        levels.SetBid(nxDecimal(10025 - 25 * i, 100, 2), nxVolume(5u));
        levels.SetAsk(nxDecimal(10025 + 25 * i, 100, 2), nxVolume(5u));
    }
    nxBenchJob job(OnInit + nxBenchScripts::GetCallback("OnMarketDepth", "depth", read));
    nxAlgoMarketDepthObject depth(job.GetHost(), &levels, 1);
    Run(state, job, [&] { return job.GetObject().OnMarketDepth(depth); });
}
constexpr const char* ReadDepth =
    "if depth.bidCount > 0 and depth.askCount > 0 then local best = depth:bid(depth.bidCount - 1) "
    "total = total + depth:askQty(0) end";
BENCHMARK_CAPTURE(OnMarketDepth, whole, ReadDepth);

void OnOrderFill(benchmark::State& state, const char* read)
{
    nxBenchJob job(OnInit + nxBenchScripts::GetCallback("OnOrderFill", "update", read));
    nxAlgoOrderObject order(job.GetHost());
    nxAlgoOrderUpdateObject update(job.GetHost(), &order);
    Run(state, job, [&] { return job.GetObject().OnOrderFill(update); });
}
constexpr const char* ReadUpdate =
    "if update.id ~= nil then local p, s = update.price, update.side "
    "total = total + update.executed + update.working end";
BENCHMARK_CAPTURE(OnOrderFill, whole, ReadUpdate);

void OnPosition(benchmark::State& state, const char* read)
{
    nxBenchJob job(OnInit + nxBenchScripts::GetCallback("OnPosition", "position", read));
    nxAlgoPositionObject position(job.GetHost(), 1);
    Run(state, job, [&] { return job.GetObject().OnPosition(position); });
}
constexpr const char* ReadPosition =
    "local n, c = position.totalNet, position.totalCost local d = position.dayNet "
    "local o = position.openPos total = total + position.id";
BENCHMARK_CAPTURE(OnPosition, whole, ReadPosition);

void OnTickData(benchmark::State& state, const char* read)
{
    nxBenchJob job(OnInit + nxBenchScripts::GetCallback("OnTickData", "bar", read));
    nxTickData record;
    record.SetOpen(nxDecimal(10025, 100, 2));
    record.SetHigh(nxDecimal(10050, 100, 2));
    record.SetLow(nxDecimal(10000, 100, 2));
    record.SetClose(nxDecimal(10025, 100, 2));
    record.SetVolume(7);
    nxAlgoTickDataObject bar(job.GetHost(), nullptr);
    bar.SetTickData(record);
    Run(state, job, [&] { return job.GetObject().OnTickData(bar); });
}
constexpr const char* ReadBar =
    "local range = bar.high - bar.low if bar.close >= bar.open then total = total + bar.volume end";
BENCHMARK_CAPTURE(OnTickData, whole, ReadBar);

// How long single events take: each is timed, which adds some 40 ns to it. One in which the system gave the
// processor to somebody else is counted and left out; what else comes from outside does not come again, so
// the longest is that of the best of some passes.
class Pauses
{
public:
    explicit Pauses(nxBenchJob& job) : _job(job) {}

    void Pass()
    {
        std::vector<float> times;
        times.reserve(Events);
        auto switches = _GetSwitches();
        for (std::size_t i = 0; i < Events; ++i) {
            const Clock::time_point begin = Clock::now();
            benchmark::DoNotOptimize(_job.GetObject().OnPrice(_job.GetPrice()));
            const Clock::duration time = Clock::now() - begin;
            if (time > WorthALook && std::exchange(switches, _GetSwitches()) != switches) {
                ++_taken;
            } else {
                times.push_back(std::chrono::duration<float, std::micro>(time).count());
            }
        }
        const auto high = times.end() - static_cast<std::ptrdiff_t>(times.size() / 1000);
        std::nth_element(times.begin(), high, times.end());
        _p999 = std::min(_p999, *high);
        _longest = std::min(_longest, *std::max_element(high, times.end()));
    }

    void Tell(benchmark::State& state) const
    {
        state.counters["p999_us"] = _p999;
        state.counters["longest_us"] = _longest;
        state.counters["taken"] = static_cast<double>(_taken);
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t Events = 10'000'000;
    static constexpr auto WorthALook = std::chrono::microseconds(20);

    static long _GetSwitches()
    {
        rusage usage{};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_nivcsw;
    }

    nxBenchJob& _job;
    float _p999 = std::numeric_limits<float>::max();
    float _longest = std::numeric_limits<float>::max();
    std::size_t _taken = 0;
};

void Pause(benchmark::State& state, const std::string& script)
{
    nxBenchJob job(OnInit + script);
    Pauses pauses(job);
    for (auto _ : state)
        pauses.Pass();
    pauses.Tell(state);
    state.counters["MB"] = static_cast<double>(job.GetObject().GetMemory().GetBytesInUse()) / 1e6;
}

constexpr int For64MB = 680000;
const std::string SplitHeap = nxBenchScripts::GetHeap(For64MB, 100);
BENCHMARK_CAPTURE(Pause, read, nxBenchScripts::Whole)->Iterations(3);
BENCHMARK_CAPTURE(Pause, read_64MB_live, SplitHeap + nxBenchScripts::Whole)->Iterations(3);
BENCHMARK_CAPTURE(Pause, kept, nxBenchScripts::Kept)->Iterations(3);
BENCHMARK_CAPTURE(Pause, kept_64MB_live, SplitHeap + nxBenchScripts::Kept)->Iterations(3);
// All of it in one table, which Lua marks in one step.
BENCHMARK_CAPTURE(Pause, kept_64MB_in_one, nxBenchScripts::GetHeap(For64MB) + nxBenchScripts::Kept)
    ->Iterations(3);

}  // namespace
