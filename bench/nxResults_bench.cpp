// What a run's results cost: the collector and the measures over a million fills, a round trip for two of
// them.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include "host/exchange/nxExchangeOrder.h"
#include "host/market/nxMarketProduct.h"
#include "host/results/nxDayStatistics.h"
#include "host/results/nxMeasures.h"
#include "host/results/nxResultCollector.h"

namespace {

constexpr unsigned int Fills = 1'000'000;
constexpr double MiB = 1 << 20;

std::size_t GetHeap()
{
    return mallinfo2().uordblks + mallinfo2().hblkhd;
}

void CollectFills(benchmark::State& state)
{
    std::size_t heap = 0;
    for (auto _ : state) {
        const std::size_t before = GetHeap();
        nxMarketProduct market("SIM");
        nxResultCollector collector({}, {});
        collector.AddProduct(nxProductAccount(), market);
        nxPositionKeeper position(nxDecimalOne);
        nxTradingStatistics::Money money;
        nxExchangeOrder order;
        nxExchangeEvent fill;
        fill.kind = nxExchangeEvent::Kind::Filled;
        fill.status = nxOrderStatus_Filled;
        fill.fillVolume = fill.volume = 1;
        order.terms.volume = nxVolume(1u);
        for (unsigned int i = 0; i < Fills; ++i) {
            order.id = i + 1;
            order.kind.side = i % 2 == 0 ? nxSide::Buy : nxSide::Sell;
            fill.time = nxTime::NanosecondsPerSecond * i;
            fill.fillPrice = nxDecimal::FromMantissa(10'000 + i % 7, 2);
            collector.BeginRow(0, fill.time);
            collector.OnRequest(order, nxOrderRequest::New, order.terms, market, fill.time, fill.time);
            position.AddFill(order.kind.side, fill.fillPrice, 1, {});
            collector.OnFill(order, fill, {});
            collector.OnEvent(order, fill, market);
            money.profit = nxExactAmount(fill.fillPrice, position.GetNet(), nxDecimalOne);
            collector.OnValue(0, 0, position, fill.fillPrice, money);
            collector.EndRow(0);
        }
        collector.Finish(fill.time);
        const std::vector<nxResultData> results = collector.TakeResults();
        heap = GetHeap() - before;
        nxResultRun run;
        const nxMeasureBasis basis(results.front(), run);
        for (const nxMeasure& measure : nxMeasure::GetAll())
            benchmark::DoNotOptimize(measure.compute(basis));
        if (results.front().trips.GetCount() != Fills / 2) state.SkipWithError("other round trips");
    }
    state.counters["MiB"] = static_cast<double>(heap) / MiB;
}
BENCHMARK(CollectFills)->Name("nxResults/a_million_fills")->Unit(benchmark::kMillisecond);

}  // namespace
