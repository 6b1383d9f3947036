// The exchange beside a naive book over random flows: every fill and every place in a queue must agree.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "tests/host/nxExchangeFixture.h"
#include "tests/host/nxNaiveBook.h"

namespace {

class Pair
{
public:
    // The exchange may join a market that has moved for a while.
    Pair(nxNaiveBook::Model model, bool hasDepth, unsigned long long seed, bool joinsLate)
        : _random(seed), _hasDepth(hasDepth), _real(MakeOptions(model)), _naive(model, hasDepth)
    {
        if (!joinsLate) _real.exchange.OnOpen(0, 0);
        if (_hasDepth) {
            _real.Depth({{Price(99), 5, nxSide::Buy}}, 0);
            _naive.SetDepth({{true, 99, 5}});
        }
        for (unsigned int moves = joinsLate ? 1 + Below(20) : 1; moves != 0; --moves)
            MoveMarket();
        if (!joinsLate) return;
        MoveMarket(false);
        _naive.ForgetTrades();
        _real.exchange.Join(0, ++_time);
    }

    void Step()
    {
        ++_time;
        switch (Below(8)) {
            case 0:
            case 1:
                return SendNew();
            case 2:
                return Change();
            case 3:
                return Cancel();
            default:
                return MoveMarket();
        }
    }

    // Empty when both agree.
    std::string Compare()
    {
        std::vector<std::string> fills;
        for (nxExchangeEvent event; _real.exchange.PopEvent(event, _time);)
            if (event.kind == nxExchangeEvent::Kind::Filled)
                fills.push_back(fmt::format("{}: {}@{} {}", event.order, event.fillVolume,
                                            event.fillPrice.GetAsString(),
                                            event.isMaker ? "maker" : "taker"));
        count += fills.size();
        if (fills != _naive.fills)
            return fmt::format("fills: {}\nnaive: {}", fmt::join(fills, ", "), fmt::join(_naive.fills, ", "));
        _naive.fills.clear();
        for (unsigned int id = 1; id <= _real.exchange.GetOrderCount(); ++id) {
            const nxExchangeOrder& real = _real.exchange.GetOrder(id);
            const nxNaiveBook::Order* naive = _naive.Find(id);
            if (real.IsAlive() != (naive != nullptr)) return fmt::format("one of order {} lives", id);
            if (naive == nullptr) continue;
            const bool isQueued = real.triggered && !real.kind.isMarket;
            const nxVolume ahead = naive->ahead ? nxVolume(*naive->ahead) : nxVolume();
            if (isQueued && real.ahead != ahead)
                return fmt::format("order {}: ahead {}, naive {}", id, real.ahead.GetAsLogString(),
                                   ahead.GetAsLogString());
            if (!real.triggered && real.terms.stopPrice != Price(naive->stop))
                return fmt::format("order {}: stop", id);
        }
        return {};
    }

    std::size_t count = 0;

private:
    static nxExchangeOptions MakeOptions(nxNaiveBook::Model model)
    {
        nxExchangeOptions options = MakePlainOptions();
        options.fills = nxFillModel::Find(model == nxNaiveBook::Model::Touch   ? "touch"
                                          : model == nxNaiveBook::Model::Cross ? "cross"
                                                                               : "queue");
        return options;
    }
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(_random.GetBelow(limit)); }
    int Near(int spread)
    {
        return 100 + static_cast<int>(Below(2 * static_cast<unsigned>(spread) + 1)) - spread;
    }
    static nxDecimal Price(int price) { return nxDecimal::FromMantissa(price, 0); }

    void SendNew()
    {
        using enum nxOrderExecution;
        static constexpr nxOrderExecution executions[] = {
            None, None, None, None, ImmediateOrCancel, FillOrKill, Stop, Iceberg, Iceberg, TrailingStop};
        nxNaiveBook::Order naive;
        nxOrderKind kind;
        nxOrderTerms terms;
        naive.isBuy = Below(2) == 0;
        kind.side = naive.isBuy ? nxSide::Buy : nxSide::Sell;
        naive.execution = kind.execution = executions[Below(10)];
        kind.duration = kind.IsImmediate() ? nxOrderDuration::Day : nxOrderDuration::Cancelled;
        naive.isMarket = kind.isMarket = kind.execution != Iceberg && Below(5) == 0;
        naive.volume = 1 + Below(9);
        terms.volume = naive.volume;
        if (!kind.isMarket) terms.price = Price(naive.price = Near(5));
        if (kind.execution == Iceberg) {
            naive.peak = 1 + Below(naive.volume);
            naive.threshold = Below(naive.peak);
            terms.icebergMinPeak = naive.peak;
            terms.icebergThreshold = naive.threshold;
        }
        if (kind.IsStop()) {
            naive.waits = true;
            terms.stopPrice = Price(naive.stop = Near(6));
        }
        naive.id = _real.exchange.Submit(kind, terms, _time);
        _real.exchange.Advance(_time);
        const nxExchangeOrder& order = _real.exchange.GetOrder(naive.id);
        // A trailing stop has its distance from the market of its arrival.
        if (order.trailDistance.IsValid()) naive.trail = static_cast<int>(order.trailDistance.GetMantissa());
        if (order.status != nxOrderStatus_Rejected) _naive.New(naive);
    }
    // One of the latest orders that lives.
    const nxExchangeOrder* Pick()
    {
        const unsigned int orders = _real.exchange.GetOrderCount();
        if (orders == 0) return nullptr;
        const nxExchangeOrder& order = _real.exchange.GetOrder(orders - Below(std::min(orders, 20u)));
        return order.IsAlive() ? &order : nullptr;
    }
    void Change()
    {
        const nxExchangeOrder* order = Pick();
        if (order == nullptr || order->kind.isMarket || !order->triggered) return;
        nxOrderTerms changes = nxOrderTerms::MakeNoChange();
        const int price = Below(2) == 0 ? static_cast<int>(order->terms.price.GetMantissa()) : Near(5);
        const unsigned int floor =
            std::max(order->executed, nxOrderTerms::GetOr(order->terms.icebergMinPeak, 1));
        changes.price = Price(price);
        changes.volume = floor + Below(6);
        _real.exchange.Amend(order->id, changes, _time);
        const unsigned int id = order->id;
        _naive.Amend(id, price, changes.volume.GetValue());
        _real.exchange.Advance(_time);
    }
    void Cancel()
    {
        if (const nxExchangeOrder* order = Pick()) {
            _naive.Cancel(order->id);
            _real.exchange.Cancel(order->id, _time);
            _real.exchange.Advance(_time);
        }
    }

    void MoveMarket(bool mayTrade = true)
    {
        nxFeedQuote row = MakeNoQuote();
        const bool isTrade = mayTrade && Below(2) == 0;
        if (isTrade) {
            const int price = Near(4), side = static_cast<int>(Below(3)) - 1;
            const unsigned int volume = 1 + Below(12);
            row.last = Price(price);
            row.lastVolume = volume;
            row.side = side == 0 ? nxBuySellEnum() : side > 0 ? nxBuySell_Buy : nxBuySell_Sell;
            _naive.Trade(price, volume, side);
        }
        if (_hasDepth) {
            if (isTrade) {
                _real.Quote(row, _time);
                return _naive.SetQuote({}, true);
            }
            std::vector<nxFeedLevel> levels;
            std::vector<nxNaiveBook::Change> changes;
            for (unsigned int i = 0, count_ = 1 + Below(3); i < count_; ++i) {
                nxNaiveBook::Change& change = changes.emplace_back();
                change.isBid = Below(2) == 0;
                change.price =
                    100 + (change.isBid ? -1 : 1) * static_cast<int>(Below(5)) + static_cast<int>(Below(2));
                change.volume = Below(3) == 0 ? 0 : Below(12);
                levels.push_back(
                    {Price(change.price), change.volume, change.isBid ? nxSide::Buy : nxSide::Sell});
            }
            _real.Depth(levels, _time);
            return _naive.SetDepth(changes);
        }
        std::optional<nxNaiveBook::Quote> quote;
        if (!isTrade || Below(2) == 0) {
            if (Below(3) != 0) {
                _quote.first = {true, 100 - static_cast<int>(Below(4)), Below(12)};
                _quote.second = {false, 100 + static_cast<int>(Below(4)), Below(12)};
            }
            quote = _quote;
            row.bid = Price(_quote.first.price);
            row.bidVolume = _quote.first.volume;
            row.ask = Price(_quote.second.price);
            row.askVolume = _quote.second.volume;
        }
        _real.Quote(row, _time);
        _naive.SetQuote(quote, isTrade);
    }

    nxExactRandom _random;
    const bool _hasDepth;
    nxExchangeFixture _real;
    nxNaiveBook _naive;
    nxNaiveBook::Quote _quote{{true, 99, 5}, {false, 101, 5}};
    long long _time = 0;
};

class nxExchangeNaive : public testing::TestWithParam<std::tuple<nxNaiveBook::Model, bool>>
{
};

TEST_P(nxExchangeNaive, AgreesOnEveryFillAndEveryPlace)
{
    const auto [model, hasDepth] = GetParam();
    std::size_t fills = 0;
    for (unsigned long long seed = 1; seed <= 200; ++seed) {
        Pair pair(model, hasDepth, seed, seed % 2 == 0);
        for (int step = 0; step < 150; ++step) {
            pair.Step();
            const std::string difference = pair.Compare();
            ASSERT_EQ(difference, "") << "seed " << seed << ", step " << step;
        }
        fills += pair.count;
    }
    EXPECT_GT(fills, 3000u);
}

INSTANTIATE_TEST_SUITE_P(All, nxExchangeNaive,
                         testing::Combine(testing::Values(nxNaiveBook::Model::Touch,
                                                          nxNaiveBook::Model::Cross,
                                                          nxNaiveBook::Model::Queue),
                                          testing::Bool()));

}  // namespace
