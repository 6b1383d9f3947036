#include <benchmark/benchmark.h>

#include <random>

#include "indicators/nxIndicatorCatalogue.h"

namespace {

using Values = nxTechnicalIndicator::Values;

// A random walk, with room for the bars that a run adds.
struct Bars
{
    Values open, high, low, close, volume;

    void Grow(std::size_t count)
    {
        static std::mt19937 random(1);
        while (close.size() < count) {
            const double before = close.empty() ? 10000 : close.back();
            const double now = before + static_cast<double>(random() % 21) - 10;
            open.push_back(before);
            high.push_back(std::max(before, now) + static_cast<double>(random() % 10));
            low.push_back(std::min(before, now) - static_cast<double>(random() % 10));
            close.push_back(now);
            volume.push_back(static_cast<double>(random() % 1000));
        }
    }
};

Bars bars;
constexpr unsigned int added = 20000;

std::unique_ptr<nxTechnicalIndicator> CreateOver(const char* type, unsigned int count)
{
    bars.Grow(1000000 + added);
    std::string error;
    auto indicator = nxIndicatorCatalogue::Create(type, {}, error);
    indicator->CalculateNewResult(bars.open, bars.high, bars.low, bars.close, bars.volume, count);
    return indicator;
}

// One new bar after `count` bars: a stretch of `added` bars, one call each.
void NewBar(benchmark::State& state, const char* type)
{
    const auto count = static_cast<unsigned int>(state.range(0));
    std::unique_ptr<nxTechnicalIndicator> indicator;
    for (auto _ : state) {
        state.PauseTiming();
        indicator = CreateOver(type, count);
        state.ResumeTiming();
        for (unsigned int i = 1; i <= added; ++i) {
            indicator->CalculateNewResult(bars.open, bars.high, bars.low, bars.close, bars.volume, count + i);
        }
    }
    state.counters["per_bar"] = benchmark::Counter(static_cast<double>(state.iterations()) * added,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void RealTimeBar(benchmark::State& state, const char* type)
{
    bars.Grow(1000000 + added);
    const auto indicator = CreateOver(type, static_cast<unsigned int>(bars.close.size() - 1));
    for (auto _ : state) {
        indicator->CalculateRealTime(bars.open, bars.high, bars.low, bars.close, bars.volume);
    }
}

const bool registered = [] {
    for (const nxIndicatorType& type : nxIndicatorCatalogue::GetTypes()) {
        benchmark::RegisterBenchmark((std::string("indicator/new_bar/") + type.name).c_str(), NewBar,
                                     type.name)
            ->Arg(1000)
            ->Arg(100000)
            ->Arg(1000000)
            ->Iterations(10);
        benchmark::RegisterBenchmark((std::string("indicator/real_time/") + type.name).c_str(), RealTimeBar,
                                     type.name);
    }
    return true;
}();

}  // namespace
