#include <benchmark/benchmark.h>

#include <charconv>
#include <string>

#include "base/enums/nxRoundingMethodEnum.h"
#include "base/values/nxDecimal.h"

namespace {

const std::string text = "61800.25";
const nxDecimal a(6180025, 100, 2);
const nxDecimal b(618003, 10, 1);

void Parse(benchmark::State& state)
{
    for (auto _ : state) {
        nxDecimal value;
        benchmark::DoNotOptimize(value.SetFromChars(text.data(), text.data() + text.size(), '.'));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(Parse)->Name("nxDecimal/parse");

void PeerParse(benchmark::State& state)
{
    for (auto _ : state) {
        double value = 0;
        benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), value));
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(PeerParse)->Name("peer/from_chars_double");

template <class Operation>
void Run(benchmark::State& state, Operation operation)
{
    nxDecimal x = a;
    nxDecimal y = b;
    for (auto _ : state) {
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        auto result = operation(x, y);
        benchmark::DoNotOptimize(result);
    }
}

BENCHMARK_CAPTURE(Run, subtract, [](const nxDecimal& x, const nxDecimal& y) {
    return x - y;
})->Name("nxDecimal/subtract");
BENCHMARK_CAPTURE(Run, compare, [](const nxDecimal& x, const nxDecimal& y) {
    return x < y;
})->Name("nxDecimal/compare");
BENCHMARK_CAPTURE(Run, get_as_double, [](const nxDecimal& x, const nxDecimal&) {
    return x.GetAsDouble();
})->Name("nxDecimal/get_as_double");
BENCHMARK_CAPTURE(Run, print, [](const nxDecimal& x, const nxDecimal&) {
    return x.GetAsString('.');
})->Name("nxDecimal/print");
BENCHMARK_CAPTURE(Run, set_from_double, [](const nxDecimal&, const nxDecimal&) {
    double number = 61800.25;
    benchmark::DoNotOptimize(number);
    nxDecimal value;
    value.SetFromDouble(number, 4);
    return value;
})->Name("nxDecimal/set_from_double");
BENCHMARK_CAPTURE(Run, round, [](const nxDecimal& x, const nxDecimal&) {
    static const nxDecimal tick(5, 100, 2);
    static const nxRoundingMethodEnum method(nxRoundingMethod_Nearest);
    nxDecimal value = x;
    value.Round(tick, method);
    return value;
})->Name("nxDecimal/round");

}  // namespace
