// The simulated exchange alone, over one product with five levels a side: requests, fills and market events.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "host/exchange/nxSimulatedExchange.h"

namespace {

constexpr int Mid = 10'000;

nxDecimal Price(int ticks)
{
    return nxDecimal::FromMantissa(ticks, 2);
}

// By turns.
nxSide GetSide(std::int64_t order)
{
    return order % 2 == 0 ? nxSide::Buy : nxSide::Sell;
}

class Trading
{
public:
    Trading()
    {
        nxSimulatedExchange::Product product;
        product.market = &_market;
        product.tickSize = Price(1);
        _exchange.AddProduct(product);
        _exchange.OnOpen(0, _time);
        for (int i = 1; i <= 5; ++i) {
            _levels.push_back({Price(Mid - i), 1'000'000, nxSide::Buy});
            _levels.push_back({Price(Mid + i), 1'000'000, nxSide::Sell});
        }
        Show(_levels);
    }

    void Show(const std::vector<nxFeedLevel>& levels)
    {
        _market.ApplyDepth(levels);
        _exchange.Advance(++_time);
        _shown.kind = nxFeedKind::Depth;
        _shown.time = _time;
        _shown.levels = levels;
        _exchange.OnEvent(0, _shown);
        Listen();
    }
    // The volume of the best bid and ask changes.
    void MoveBest()
    {
        _levels[0].volume = _levels[1].volume = 1'000'000 + static_cast<unsigned int>(_time % 7);
        _best.assign(_levels.begin(), _levels.begin() + 2);
        Show(_best);
    }
    unsigned int Add(nxSide side, int price, unsigned int volume = 10)
    {
        _kind.side = side;
        _terms.price = Price(price);
        _terms.volume = volume;
        const unsigned int order = _exchange.Submit(_kind, _terms, _time);
        Listen();
        return order;
    }
    void Amend(unsigned int order, int price)
    {
        nxOrderTerms changes = nxOrderTerms::MakeNoChange();
        changes.price = Price(price);
        _exchange.Amend(order, changes, _time);
        Listen();
    }
    void Cancel(unsigned int order)
    {
        _exchange.Cancel(order, _time);
        Listen();
    }

private:
    void Listen()
    {
        _exchange.Advance(_time);
        while (_exchange.PopEvent(_event, _time))
            benchmark::DoNotOptimize(_event.order);
    }

    nxMarketProduct _market{"SIM"};
    nxFeedEvent _shown;
    nxSimulatedExchange _exchange{nxExchangeOptions()};
    nxOrderKind _kind;
    nxOrderTerms _terms;
    nxExchangeEvent _event;
    std::vector<nxFeedLevel> _levels, _best;
    long long _time = 1;
};

// A batch of orders each time, so that the orders that an exchange keeps do not grow without end.
constexpr int Batch = 10'000;

template <class Operation>
void RunBatches(benchmark::State& state, int operations, Operation operation)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto trading = std::make_unique<Trading>();
        std::vector<unsigned int> orders;
        if (operations == 0)
            for (int i = 0; i < Batch; ++i)
                orders.push_back(trading->Add(nxSide::Buy, Mid - 1 - i % 50));
        state.ResumeTiming();
        for (int i = 0; i < Batch; ++i)
            operation(*trading, i, orders);
        state.PauseTiming();
        trading.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * Batch * std::max(operations, 1));
}

void Add(benchmark::State& state)
{
    RunBatches(state, 1, [](Trading& trading, int i, auto&) { trading.Add(nxSide::Buy, Mid - 1 - i % 50); });
}
BENCHMARK(Add)->Name("nxExchange/add");

// From price to price, through levels that are full of others.
void Amend(benchmark::State& state)
{
    RunBatches(state, 0, [](Trading& trading, int i, const auto& orders) {
        trading.Amend(orders[static_cast<std::size_t>(i)], Mid - 1 - (i + 1) % 50);
    });
}
BENCHMARK(Amend)->Name("nxExchange/amend");

void Cancel(benchmark::State& state)
{
    RunBatches(state, 0, [](Trading& trading, int i, const auto& orders) {
        trading.Cancel(orders[static_cast<std::size_t>(i)]);
    });
}
BENCHMARK(Cancel)->Name("nxExchange/cancel");

void Match(benchmark::State& state)
{
    RunBatches(state, 1, [](Trading& trading, int i, auto&) {
        trading.Add(GetSide(i), i % 2 == 0 ? Mid + 1 : Mid - 1);
    });
}
BENCHMARK(Match)->Name("nxExchange/match");

// As a market maker does: an order is sent, moved and pulled, and of four one takes.
void Mix(benchmark::State& state)
{
    RunBatches(state, 4, [](Trading& trading, int i, auto&) {
        const unsigned int order = trading.Add(nxSide::Buy, Mid - 1 - i % 5);
        trading.Amend(order, Mid - 1 - (i + 1) % 5);
        trading.Cancel(order);
        trading.Add(nxSide::Sell, Mid - 1);
    });
}
BENCHMARK(Mix)->Name("nxExchange/mix");

// One change of the best bid and ask, with two quotes kept working, after so many orders have come and gone.
void MarketEvent(benchmark::State& state)
{
    Trading trading;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        trading.Cancel(trading.Add(GetSide(i), i % 2 == 0 ? Mid - 2 : Mid + 2));
    trading.Add(nxSide::Buy, Mid - 1);
    trading.Add(nxSide::Sell, Mid + 1);
    for (auto _ : state)
        trading.MoveBest();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(MarketEvent)->Name("nxExchange/market_event_after_dead_orders")->Arg(0)->Arg(100'000);

}  // namespace
