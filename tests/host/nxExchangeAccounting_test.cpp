// Random operations over a random market, with brackets, latencies, openings and closings: whatever happens,
// what an order executes, works and gives up is its volume, and cash and position are the profit.
#include <gtest/gtest.h>

#include <algorithm>

#include "host/accounts/nxFeeSchedule.h"
#include "host/accounts/nxPositionKeeper.h"
#include "tests/host/nxExchangeFixture.h"

namespace {

constexpr long long Millisecond = 1'000'000;

nxDecimal Cents(long long count)
{
    return nxDecimal::FromMantissa(count, 2);
}

class RandomTrading
{
public:
    explicit RandomTrading(const nxFillModel& model) : _trading(MakeOptions(model), Cents(25))
    {
        _trading.exchange.OnOpen(0, 0);
    }

    void Run(int operations)
    {
        for (int i = 0; i < operations && !testing::Test::HasFatalFailure(); ++i) {
            // Three days in all, so that orders expire.
            _time += 8640 * static_cast<long long>(Below(2 * Millisecond));
            MoveMarket();
            Send();
            Listen();
        }
        _time += 400LL * 86'400'000 * Millisecond;
        Listen();
        CheckOrders();
    }

    std::size_t fills = 0;

private:
    static nxExchangeOptions MakeOptions(const nxFillModel& model)
    {
        nxExchangeOptions options;
        options.fills = &model;
        options.request = {0, 40 * Millisecond};
        options.answer = {Millisecond, 90 * Millisecond};
        return options;
    }
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(_random.GetBelow(limit)); }
    nxDecimal Near(int ticks)
    {
        return Cents(_mid + 25 * (static_cast<int>(Below(2 * static_cast<unsigned>(ticks) + 1)) - ticks));
    }

    void MoveMarket()
    {
        _trading.exchange.Advance(_time);
        if (Below(60) == 0) {
            _isOpen = !_isOpen;
            _isOpen ? _trading.exchange.OnOpen(0, _time) : _trading.exchange.OnClose(0, _time);
        }
        _mid = std::clamp(_mid + 25 * (static_cast<int>(Below(3)) - 1), 5000, 20000);
        nxFeedQuote row = MakeNoQuote();
        if (Below(2) == 0) {
            row.bid = Cents(_mid - 25 * static_cast<int>(Below(3)));
            row.bidVolume = Below(30);
            row.ask = Cents(_mid + 25 * static_cast<int>(1 + Below(2)));
            row.askVolume = Below(30);
        }
        if (Below(3) == 0) {
            row.last = Near(2);
            row.lastVolume = 1 + Below(40);
            row.side = Below(2) == 0 ? nxBuySell_Buy : nxBuySell_Sell;
        }
        _trading.Quote(row, _time);
    }

    void Send()
    {
        nxSimulatedExchange& exchange = _trading.exchange;
        if (const unsigned int what = Below(4); what < 2 && exchange.GetOrderCount() != 0) {
            // Dead ones too, and those not arrived yet.
            const unsigned int count = exchange.GetOrderCount();
            const unsigned int id = count - Below(std::min(count, 30u));
            if (what == 0) return exchange.Cancel(id, _time);
            nxOrderTerms changes = nxOrderTerms::MakeNoChange();
            if (Below(2) == 0) changes.price = Near(4);
            if (Below(2) == 0) changes.volume = Below(20);
            if (Below(6) == 0) changes.stopPrice = Near(4);
            return exchange.Amend(id, changes, _time);
        }
        nxOrderKind kind;
        nxOrderTerms terms;
        kind.side = nxSides[Below(2)];
        kind.isMarket = Below(4) == 0;
        kind.execution = static_cast<nxOrderExecution>(Below(7));
        kind.duration = Below(3) == 0 ? static_cast<nxOrderDuration>(Below(5)) : nxOrderDuration::Day;
        kind.crossProtected = Below(3) == 0;
        kind.owner = Below(2);
        terms.volume = Below(20);
        if (!kind.isMarket) terms.price = Near(4);
        if (kind.IsStop()) terms.stopPrice = Near(4);
        if (kind.duration == nxOrderDuration::Date)
            terms.expiry = nxDateTime(1970, 1, static_cast<int>(2 + Below(9)), 0, 0, 0, 0);
        if (kind.execution == nxOrderExecution::Iceberg) {
            terms.icebergMinPeak = Below(6);
            terms.icebergMaxPeak = Below(8);
        }
        if (kind.execution == nxOrderExecution::Bracket) {
            terms.bracketProfit = Below(6);
            terms.bracketStopLoss = Below(6);
            terms.bracketStopIsLimit = Below(2) == 0;
            terms.bracketStopTrails = Below(2) == 0;
        }
        exchange.Submit(kind, terms, _time);
    }

    void Listen()
    {
        long long lastDue = 0;
        _trading.exchange.Advance(_time);
        for (nxExchangeEvent event; _trading.exchange.PopEvent(event, _time);) {
            ASSERT_GE(event.due, std::max(lastDue, event.time));
            lastDue = event.due;
            if (event.kind == nxExchangeEvent::Kind::Filled) CountFill(event);
        }
    }

    void CountFill(const nxExchangeEvent& event)
    {
        ++fills;
        const nxExchangeOrder& order = _trading.exchange.GetOrder(event.order);
        _executed.resize(std::max<std::size_t>(_executed.size(), event.order + 1));
        ASSERT_EQ(event.executed, _executed[event.order] += event.fillVolume);
        ASSERT_LE(event.executed, event.volume);
        ASSERT_TRUE(order.kind.isMarket || !nxIsBetter(order.kind.side, event.fillPrice, event.price));
        const nxExactAmount fee = _fees.GetFee(event.isMaker, event.fillPrice, event.fillVolume, Dec("12.5"));
        _keeper.AddFill(order.kind.side, event.fillPrice, event.fillVolume, fee);
        const long long change = nxGetSigned(order.kind.side, event.fillVolume);
        _position += change;
        _cash -= nxExactAmount(event.fillPrice, change, Dec("12.5")) + fee;
        ASSERT_EQ(_keeper.GetNet(), _position);
        const nxDecimal mark = Cents(_mid);
        ASSERT_TRUE(_keeper.GetTotalProfit(mark) == _cash + nxExactAmount(mark, _position, Dec("12.5")));
        ASSERT_TRUE(_keeper.GetRealisedProfit(mark) + _keeper.GetOpenProfit(mark) ==
                    _keeper.GetTotalProfit(mark));
    }

    void CheckOrders()
    {
        nxSimulatedExchange& exchange = _trading.exchange;
        std::size_t resting = 0, alive = 0;
        exchange.GetBook(0).ForEachOrder([&](const nxExchangeOrder& order) {
            EXPECT_TRUE(order.IsAlive() && order.isResting) << order.id;
            ++resting;
        });
        for (unsigned int id = 1; id <= exchange.GetOrderCount(); ++id) {
            const nxExchangeOrder& order = exchange.GetOrder(id);
            const bool isRejected = order.status == nxOrderStatus_Rejected;
            const unsigned int executed = id < _executed.size() ? _executed[id] : 0;
            ASSERT_EQ(order.executed, executed) << id;
            if (isRejected) continue;
            alive += order.isResting;
            const unsigned int pulled = order.status == nxOrderStatus_Deleted ? order.GetRemaining() : 0;
            const unsigned int working = order.IsAlive() ? order.GetRemaining() : 0;
            ASSERT_EQ(executed + working + pulled, order.terms.volume.GetValue()) << id;
            ASSERT_EQ(order.status == nxOrderStatus_Filled,
                      working + pulled == 0 && executed != 0 && order.status != nxOrderStatus_Deleted)
                << id;
            ASSERT_NE(order.status.GetEnumValue(), nxOrderStatus_Pending) << id;
        }
        EXPECT_EQ(resting, alive);
    }

    nxExactRandom _random{7};
    nxExchangeFixture _trading;
    nxPositionKeeper _keeper{Dec("12.5")};
    const nxFeeSchedule _fees{Dec("-0.00015"), Dec("0.0004"), true};
    long long _time = 0;
    long long _position = 0;
    nxExactAmount _cash;
    std::vector<unsigned int> _executed;
    int _mid = 10000;
    bool _isOpen = true;
};

TEST(nxExchangeAccounting, WhateverHappensAddsUp)
{
    for (const nxFillModel& model : nxFillModel::GetAll()) {
        SCOPED_TRACE(model.name);
        RandomTrading trading(model);
        trading.Run(30'000);
        EXPECT_GT(trading.fills, 2'000u);
    }
}

}  // namespace
