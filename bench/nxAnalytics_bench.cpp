// Trade windows, and matrices from a script's tables beside the bare product (peer/).
#include <benchmark/benchmark.h>

#include <Eigen/Core>

#include "bench/nxBenchJob.h"
#include "scriptFramework/analytics/nxTimeSeries_Trade.h"

namespace {

// One calculation over a window of so many trades; the second argument turns the regression on.
void Recalculate(benchmark::State& state)
{
    nxTimeSeries_Trade series;
    series.SetDuration(1e6);
    if (state.range(1) != 0) series.EnableRegression();
    for (long long i = 0; i < state.range(0); ++i)
        series.AddTrade(nxDecimal::FromMantissa(10'000 + i * 7 % 31, 2),
                        static_cast<unsigned int>(1 + i % 5));
    for (auto _ : state) {
        series.Recalculate();
        benchmark::DoNotOptimize(series.GetVWAP());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Recalculate)
    ->Name("nxTimeSeries_Trade/recalculate")
    ->ArgNames({"trades", "slope"})
    ->ArgsProduct({{1'000, 100'000}, {0, 1}});

// One trade into a window from which one leaves.
void Slide(benchmark::State& state)
{
    nxTimeSeries_Trade series;
    series.SetDuration(0);  // one in, and all that is older out
    const nxDecimal price = nxDecimal::FromMantissa(10'000, 2);
    for (auto _ : state) {
        series.AddTrade(price, 1u);
        series.Recalculate();
    }
}
BENCHMARK(Slide)->Name("nxTimeSeries_Trade/add_and_recalculate_1");

constexpr int Size = 100;

void MultiplyFromScript(benchmark::State& state)
{
    nxBenchJob job(R"(
function OnInit()
  a, b = {}, {}
  for i = 1, 100 do
    a[i], b[i] = {}, {}
    for j = 1, 100 do a[i][j], b[i][j] = i + j / 8, i - j / 4 end
  end
end
function OnPrice() c = matrix:multiply(a, b) end)");
    for (auto _ : state)
        benchmark::DoNotOptimize(job.GetObject().OnPrice(job.GetPrice()));
}
BENCHMARK(MultiplyFromScript)->Name("nxAlgoMatrixObject/multiply_100x100");

void MultiplyBare(benchmark::State& state)
{
    using Dense = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const Dense a = Dense::Constant(Size, Size, 1.25);
    const Dense b = Dense::Constant(Size, Size, -0.75);
    Dense c(Size, Size);
    for (auto _ : state) {
        c.noalias() = a * b;
        benchmark::DoNotOptimize(c.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(MultiplyBare)->Name("peer/eigen_multiply_100x100");

}  // namespace
