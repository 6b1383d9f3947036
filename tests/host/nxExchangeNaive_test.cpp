// The exchange beside a naive one over random flows: everything that is told, every place in a queue and
// every stop price must agree. A failure prints the seed and the last steps in the form of
// tests/data/exchange, to be made a scenario. NX_SOAK_SECONDS in the environment: each test goes on with more
// seeds for that long.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>

#include "tests/host/nxExchangeFixture.h"
#include "tests/host/nxNaiveExchange.h"

namespace {

using Naive = nxNaiveExchange;
using enum nxOrderExecution;

constexpr long long Second = nxTime::NanosecondsPerSecond;
constexpr long long Hour = 3600 * Second;
constexpr long long Day = nxTime::NanosecondsPerDay;
constexpr long long FirstDay = 19'724;  // since 1970: 2 January 2024

enum class Data { Quotes, Depth, Both, MinuteBars, UnknownBars, DailyBars };

nxDecimal ToPrice(int price)
{
    return nxDecimal::FromMantissa(price, 0);
}

class Pair
{
public:
    Pair(Data data, Naive::Fills model, unsigned long long seed, bool keepsLog)
        : _data(data), _random(seed), _keepsLog(keepsLog)
    {
        Naive::Options options;
        options.fills = model;
        options.queue = static_cast<Naive::Queue>(Below(3));
        options.power = 1 + Below(4);
        options.tick = 1 + static_cast<int>(Below(8) == 0);
        if (Below(2) == 0) options.requestLatency = Below(5) * Second;
        if (Below(2) == 0) options.answerLatency = Below(5) * Second;
        options.hasBars = data >= Data::MinuteBars;
        options.barPeriod = data == Data::MinuteBars ? 60 * Second : data == Data::DailyBars ? Day : 0;
        if (options.hasBars && Below(2) == 0) options.participation = 1 + Below(100);
        _hasSizes = !OneOf(10);
        if (Below(3) == 0) options.open = 9 * Hour, options.day = 8 * Hour;
        if (!OneOf(3)) options.selfTrade = static_cast<Naive::SelfTrade>(Below(4));
        if (OneOf(2)) options.beyond = Naive::Beyond::Walk;
        if (OneOf(2)) options.lateTrades = (1 + Below(4)) * Second;
        _options = options;
        _naive = std::make_unique<Naive>(options);
        Make();
        Begin();
    }

    void Step()
    {
        if (_options.hasBars ? !MoveTowardsBar() : Below(10) < 4) return MoveMarket();
        const unsigned int choice = Below(6);
        if (choice < 3) return SendNew();
        choice < 5 ? Change() : Cancel();
    }

    // Empty when both agree.
    std::string Compare()
    {
        std::vector<Naive::Event> told, expected;
        for (nxExchangeEvent real; _exchange->PopEvent(real, _time);)
            told.push_back(Convert(real));
        for (; _told < _naive->told.size() && _naive->told[_told].due <= _time; ++_told)
            expected.push_back(_naive->told[_told]);
        if (told != expected) return fmt::format("told:\n{}naive:\n{}", Describe(told), Describe(expected));
        for (const Naive::Event& event : told)
            fills += event.kind == nxExchangeEvent::Kind::Filled;
        orders = _naive->GetCount();
        if (_exchange->GetOrderCount() != orders) return "not the same orders";
        for (const unsigned int id : _naive->GetLine()) {
            const Naive::Order& naive = _naive->Get(id);
            const nxExchangeOrder& real = _exchange->GetOrder(id);
            if (naive.isStopWaiting && real.terms.stopPrice != ToPrice(*naive.terms.stop))
                return fmt::format("order {}: stop {}, naive {}", id, real.terms.stopPrice.GetAsString(),
                                   *naive.terms.stop);
            if (_options.hasBars || !naive.rests || naive.isMarket) continue;
            const nxVolume ahead = naive.ahead ? nxVolume(*naive.ahead) : nxVolume();
            if (real.ahead != ahead)
                return fmt::format("order {}: ahead {}, naive {}", id, real.ahead.GetAsLogString(),
                                   ahead.GetAsLogString());
        }
        return {};
    }

    std::string GetLog() const { return fmt::format("{}", fmt::join(_log, "\n")); }

    std::size_t fills = 0, orders = 0;

private:
    // What the options of the one are to the other.
    void Make()
    {
        nxExchangeOptions options;
        static const char* const models[] = {"touch", "cross", "queue"};
        options.fills = nxFillModel::Find(models[static_cast<int>(_options.fills)]);
        const std::string queue = _options.queue == Naive::Queue::Even ? "even"
                                  : _options.queue == Naive::Queue::Back
                                      ? "back"
                                      : fmt::format("power:{}", _options.power);
        EXPECT_TRUE(options.queue.SetFromText(queue));
        options.request = {_options.requestLatency, _options.requestLatency};
        options.answer = {_options.answerLatency, _options.answerLatency};
        options.participation = _options.participation;
        static constexpr nxSelfTrade selfTrades[] = {nxSelfTrade::CancelNewest, nxSelfTrade::CancelOldest,
                                                     nxSelfTrade::Refuse, nxSelfTrade::Meet};
        options.selfTrade = selfTrades[static_cast<int>(_options.selfTrade)];
        options.walksBeyond = _options.beyond == Naive::Beyond::Walk;
        options.lateTrades = _options.lateTrades;
        nxTradingHours hours;
        if (_options.day != 0) {
            EXPECT_EQ(nxTradingHours::SetFromText("09:00-17:00", hours), nullptr);
        }
        _exchange = std::make_unique<nxSimulatedExchange>(options);
        _exchange->AddProduct(
            {&_market, ToPrice(_options.tick), hours, _options.hasBars, _options.barPeriod});
        Note("== Seed\nwith fills={} queuemodel={} tick={} request={} answer={}{}{}{}",
             models[static_cast<int>(_options.fills)], queue, _options.tick,
             _options.requestLatency / 1'000'000, _options.answerLatency / 1'000'000,
             _options.participation != 0 ? fmt::format(" participation={}", _options.participation) : "",
             _options.day != 0 ? " hours=09:00-17:00" : "",
             _options.hasBars ? fmt::format(" bars={}", _options.barPeriod / Second) : "");
    }

    // The exchange may join a market that has moved for a while.
    void Begin()
    {
        _bar = _time = FirstDay * Day + (_data == Data::DailyBars ? 0 : 10 * Hour);
        const bool joins = !_options.hasBars && Below(4) == 0;
        if (!joins) SetOpen(true, _time);
        if (_data == Data::Depth || _data == Data::Both)
            TellDepth({{true, GetPrice(-1), 5}, {false, GetPrice(1), 5}});
        for (unsigned int i = 0, moves = Below(joins ? 20 : 2); i < moves && !_options.hasBars; ++i)
            MoveMarket();
        if (!joins) return;
        _mayTrade = false;
        MoveMarket();
        _mayTrade = true;
        _exchange->Join(0, _time);
        _naive->Join();
        _isOpen = true;
        Note("# joined");
    }

    template <class... Values>
    void Note(fmt::format_string<Values...> text, Values&&... values)
    {
        if (!_keepsLog) return;
        const long long second = std::max(0ll, _time - FirstDay * Day) / Second;
        _log.push_back(fmt::format("{}/{:02}:{:02}:{:02} ", second / 86400, second / 3600 % 24,
                                   second / 60 % 60, second % 60) +
                       fmt::format(text, std::forward<Values>(values)...));
        if (_log.size() > 21) _log.erase(_log.begin() + 1);
    }

    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(_random.GetBelow(limit)); }
    bool OneOf(unsigned int count) { return Below(count) == 0; }
    int GetPrice(int ticks) const { return 100 + ticks * _options.tick; }
    int Near(int spread)
    {
        return GetPrice(static_cast<int>(Below(2 * static_cast<unsigned>(spread) + 1)) - spread);
    }

    // --- Time

    void SetOpen(bool isOpen, long long time)
    {
        _isOpen = isOpen;
        _time = time;
        isOpen ? _exchange->OnOpen(0, time) : _exchange->OnClose(0, time);
        isOpen ? _naive->OnOpen(time) : _naive->OnClose(time);
        Note("{}", isOpen ? "open" : "close");
    }
    void Advance(long long time)
    {
        _exchange->Advance(time);
        _naive->Advance(time, time);
    }
    // The market opens and closes at its hours, before what is due then.
    void MoveTo(long long time)
    {
        const bool hasHours = _options.day != 0 && _data != Data::DailyBars;
        for (long long day = _time / Day * Day; hasHours && day <= time; day += Day)
            for (const long long change : {day + 9 * Hour, day + 17 * Hour}) {
                if (change <= _lastChange || change > time || change < _time) continue;
                _lastChange = change;
                if ((change == day + 9 * Hour) == _isOpen) continue;
                Advance(change - 1);
                SetOpen(!_isOpen, change);
            }
        Advance(time);
        _time = time;
    }
    // False: the next bar is due.
    bool MoveTowardsBar()
    {
        const long long unit = _data == Data::DailyBars ? 6 * Hour : 15 * Second;
        if (_nextBar <= _time) _nextBar = _bar + 4 * unit * (OneOf(8) ? 1 + Below(6) : 1);
        const long long time = _time + unit * Below(2);
        if (time >= _nextBar) return false;
        MoveTo(time);
        return true;
    }

    // --- The market

    void MoveMarket()
    {
        if (_options.hasBars) return TellBar();
        MoveTo(_time + (OneOf(40) ? Below(10) * Hour : Below(4) * Second));
        if (_data == Data::Depth ? !_mayTrade || !OneOf(3) : _data == Data::Both && OneOf(3)) {
            std::vector<Naive::Level> levels(1 + Below(3));
            for (Naive::Level& level : levels) {
                level.isBid = OneOf(2);
                level.price = GetPrice((level.isBid ? -1 : 1) * static_cast<int>(Below(5)) +
                                       static_cast<int>(Below(2)));
                level.volume = OneOf(3) ? 0 : Below(12);
            }
            TellDepth(levels);
        } else {
            TellRow();
        }
        Advance(_time);
    }

    void TellRow()
    {
        Naive::Row row;
        row.isTrade = _mayTrade && (_data == Data::Depth || OneOf(2));
        if (row.isTrade) {
            if (_hasTraded && OneOf(8)) {
                row.traded = 1 + Below(12);  // at the price of the one before
            } else {
                row.last = Near(4);
            }
            _hasTraded = true;
            if (row.last && !OneOf(8)) row.traded = 1 + Below(12);
            row.side = static_cast<int>(Below(3)) - 1;
        }
        if (_data != Data::Depth && (!row.isTrade || OneOf(2)))
            for (const bool bids : {true, false}) {
                Naive::Level& quote = _quote[bids];
                if (!OneOf(3))
                    quote = {bids, GetPrice((bids ? -1 : 1) * static_cast<int>(Below(4))), Below(12)};
                const bool isFirst = !_hasQuote[bids];
                _hasQuote[bids] = true;
                if (isFirst || !OneOf(4)) row.price[bids] = quote.price;
                if (_hasSizes && (isFirst || !OneOf(4))) row.volume[bids] = quote.volume;
            }
        nxFeedQuote quote = MakeNoQuote();
        if (row.price[1]) quote.bid = ToPrice(*row.price[1]);
        if (row.price[0]) quote.ask = ToPrice(*row.price[0]);
        if (row.volume[1]) quote.bidVolume = *row.volume[1];
        if (row.volume[0]) quote.askVolume = *row.volume[0];
        if (row.last) quote.last = ToPrice(*row.last);
        if (row.traded) quote.lastVolume = *row.traded;
        if (row.isTrade)
            quote.side = row.side == 0  ? nxBuySellEnum()
                         : row.side > 0 ? nxBuySellEnum(nxBuySell_Buy)
                                        : nxBuySellEnum(nxBuySell_Sell);
        const auto cell = [](const auto& value) { return value ? std::to_string(*value) : "."; };
        const std::string shown = fmt::format("quote {} {} {} {}", cell(row.price[1]), cell(row.volume[1]),
                                              cell(row.price[0]), cell(row.volume[0]));
        Note("{}{}",
             row.isTrade ? fmt::format("trade {} {}{} ", cell(row.last), cell(row.traded),
                                       row.side == 0  ? ""
                                       : row.side > 0 ? " BUY"
                                                      : " SELL")
                         : "",
             shown);
        _market.ApplyQuote(quote, _time);
        nxFeedEvent event;
        event.kind = nxFeedKind::Quote;
        event.quote = quote;
        Tell(event);
        _naive->OnQuote(row, _time);
    }

    void TellDepth(const std::vector<Naive::Level>& levels)
    {
        std::vector<nxFeedLevel> rows;
        std::string text = "depth";
        for (const Naive::Level& level : levels) {
            rows.push_back({ToPrice(level.price), level.volume, level.isBid ? nxSide::Buy : nxSide::Sell});
            text += fmt::format(" {} {} {}", level.isBid ? "bid" : "ask", level.price, level.volume);
        }
        Note("{}", text);
        _market.ApplyDepth(rows);
        nxFeedEvent event;
        event.kind = nxFeedKind::Depth;
        event.levels = rows;
        Tell(event);
        _naive->OnDepth(levels, _time);
    }

    // Bars come before all else that is due when they end.
    void TellBar()
    {
        MoveTo(_nextBar - 1);
        _time = _bar = _nextBar;
        Naive::Bar bar;
        bar.open = Near(4);
        bar.close = Near(4);
        bar.high = std::max(bar.open, bar.close) + static_cast<int>(Below(3)) * _options.tick;
        bar.low = std::min(bar.open, bar.close) - static_cast<int>(Below(3)) * _options.tick;
        if (!OneOf(4)) bar.volume = Below(60);
        nxFeedEvent event;
        event.kind = nxFeedKind::Bar;
        event.bar = {ToPrice(bar.open), ToPrice(bar.high), ToPrice(bar.low), ToPrice(bar.close), {}};
        if (bar.volume) event.bar.volume = *bar.volume;
        Note("bar {} {} {} {}{}", bar.open, bar.high, bar.low, bar.close,
             bar.volume ? fmt::format(" {}", *bar.volume) : "");
        _market.ApplyBar(event.bar, _time);
        Tell(event);
        _naive->OnBar(bar, _time);
        _exchange->AdvanceAmongBars(_time);
        _naive->Advance(_time, _time - 1);
        MoveTo(_time);
    }

    void Tell(nxFeedEvent& event)
    {
        event.time = _time;
        _exchange->OnEvent(0, event);
    }

    // --- Requests

    void SendNew()
    {
        static constexpr nxOrderExecution executions[] = {
            None, None, None,    None,    ImmediateOrCancel, FillOrKill, FillOrKill,
            Stop, Stop, Iceberg, Iceberg, TrailingStop,      Bracket,    Bracket};
        Naive::Order order;
        order.owner = Below(2);
        order.isBuy = OneOf(2);
        order.isProtected = OneOf(6);
        order.execution = executions[Below(std::size(executions))];
        order.duration = static_cast<nxOrderDuration>(Below(3));
        if (order.IsStop() || order.execution == Bracket) order.isProtected = order.isProtected && OneOf(2);
        if (order.execution == ImmediateOrCancel || order.execution == FillOrKill)
            order.duration = nxOrderDuration::Day;
        if (OneOf(_isOpen ? 60 : 2)) order.duration = static_cast<nxOrderDuration>(3 + Below(2));
        order.isMarket = order.execution != Iceberg && OneOf(5);
        Naive::Terms& terms = order.terms;
        terms.volume = 1 + Below(9);
        if (!order.isMarket) terms.price = Near(5);
        if (order.IsStop()) terms.stop = Near(6);
        if (order.execution == Iceberg) {
            terms.minPeak = 1 + Below(*terms.volume);
            if (OneOf(2)) terms.threshold = Below(*terms.minPeak);
        }
        if (order.execution == Bracket) {
            if (!OneOf(4)) terms.profit = 1 + Below(4);
            if (!OneOf(4) || !terms.profit) terms.stopLoss = 1 + Below(4);
            terms.stopIsLimit = OneOf(3);
            if (terms.stopIsLimit == true && OneOf(2)) terms.stopLimit = Below(3);
            terms.stopTrails = OneOf(3);
        }
        if (order.duration == nxOrderDuration::Date) terms.lastDay = _time / Day + Below(3);
        nxOrderKind kind;
        kind.owner = order.owner;
        kind.side = order.isBuy ? nxSide::Buy : nxSide::Sell;
        kind.isMarket = order.isMarket;
        kind.execution = order.execution;
        kind.duration = order.duration;
        kind.crossProtected = order.isProtected;
        Note("new {} {} {} {} {} {}{} owner={}", nxGetText(kind.side), nxGetTypeText(kind.isMarket),
             terms.price ? fmt::format("{}@{}", *terms.volume, *terms.price) : std::to_string(*terms.volume),
             nxGetText(kind.execution), nxGetText(kind.duration), Describe(terms, false),
             order.isProtected ? " protected" : "", order.owner);
        _exchange->Submit(kind, Convert(terms, nxOrderTerms()), _time);
        _naive->Submit(order, _time);
        Advance(_time);
    }

    // One of the latest orders, mostly one that lives; 0: none.
    unsigned int Pick()
    {
        const std::vector<unsigned int>& line = _naive->GetLine();
        if (!line.empty() && !OneOf(8)) return line[Below(static_cast<unsigned int>(line.size()))];
        const unsigned int count = _naive->GetCount();
        return count == 0 ? 0 : count - Below(std::min(count, 10u));
    }
    void Change()
    {
        const unsigned int id = Pick();
        if (id == 0) return;
        const Naive::Order order = _naive->Get(id);
        Naive::Terms changes;
        if (OneOf(2)) changes.volume = order.executed + Below(8);
        if (order.isMarket ? OneOf(40) : OneOf(2)) changes.price = Near(5);
        if (OneOf(order.isStopWaiting ? 2 : 40)) changes.stop = Near(6);
        const unsigned int often = order.execution == Iceberg ? 3 : 60;
        if (OneOf(often)) changes.minPeak = 1 + Below(4);
        if (OneOf(often)) changes.threshold = Below(3);
        if (OneOf(order.execution == Bracket ? 4 : 60)) changes.profit = 1 + Below(4);
        if (OneOf(order.execution == Bracket ? 4 : 60)) changes.stopLoss = 1 + Below(4);
        if (OneOf(order.duration == nxOrderDuration::Date ? 4 : 60))
            changes.lastDay = _time / Day - 1 + Below(4);
        Note("amend {} {}", id, Describe(changes, true));
        _exchange->Amend(id, Convert(changes, nxOrderTerms::MakeNoChange()), _time);
        _naive->Amend(id, changes, _time);
        Advance(_time);
    }
    void Cancel()
    {
        const unsigned int id = Pick();
        if (id == 0) return;
        Note("cancel {}", id);
        _exchange->Cancel(id, _time);
        _naive->Cancel(id, _time);
        Advance(_time);
    }

    // --- One form and the other

    static nxOrderTerms Convert(const Naive::Terms& terms, nxOrderTerms real)
    {
        const std::pair<Naive::Volume, nxVolume*> volumes[] = {{terms.volume, &real.volume},
                                                               {terms.minPeak, &real.icebergMinPeak},
                                                               {terms.threshold, &real.icebergThreshold},
                                                               {terms.profit, &real.bracketProfit},
                                                               {terms.stopLoss, &real.bracketStopLoss},
                                                               {terms.stopLimit, &real.bracketStopLimit}};
        for (const auto& [from, to] : volumes)
            if (from) *to = *from;
        if (terms.price) real.price = ToPrice(*terms.price);
        if (terms.stop) real.stopPrice = ToPrice(*terms.stop);
        real.bracketStopIsLimit = terms.stopIsLimit;
        real.bracketStopTrails = terms.stopTrails;
        if (terms.lastDay) {
            EXPECT_TRUE(nxDateTime::SetFromString(GetDate(*terms.lastDay), real.expiry).IsSuccess());
        }
        return real;
    }
    static std::string GetDate(long long day)
    {
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
        return fmt::format("{}{:02}{:02}", static_cast<int>(date.year()),
                           static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()));
    }

    static std::string Describe(const Naive::Terms& terms, bool isChange)
    {
        std::string text;
        const auto add = [&](const char* key, const auto& value) {
            if (value) text += fmt::format(" {}={}", key, *value);
        };
        if (isChange) add("volume", terms.volume), add("price", terms.price);
        add("stop", terms.stop), add("peak", terms.minPeak), add("threshold", terms.threshold);
        add("profit", terms.profit), add("stoploss", terms.stopLoss), add("stoplimit", terms.stopLimit);
        if (terms.stopIsLimit == true) text += " stoptype=LIMIT";
        if (terms.stopTrails == true) text += " trailing";
        if (terms.lastDay) text += " expiry=" + GetDate(*terms.lastDay);
        return text;
    }

    static Naive::Event Convert(const nxExchangeEvent& real)
    {
        const auto price = [](const nxDecimal& from) {
            return from.IsValid() ? Naive::Price(static_cast<int>(from.GetMantissa())) : std::nullopt;
        };
        Naive::Event event;
        event.kind = real.kind;
        event.order = real.order;
        event.owner = real.owner;
        event.time = real.time;
        event.due = real.due;
        event.status = static_cast<Naive::Status>(real.status.GetEnumValue() - nxOrderStatus_Pending);
        event.price = price(real.price);
        event.stop = price(real.stopPrice);
        event.volume = real.volume;
        event.executed = real.executed;
        event.fillPrice = price(real.fillPrice);
        event.fillVolume = real.fillVolume;
        event.isMaker = real.isMaker;
        event.cause = static_cast<Naive::Cause>(real.cause);
        event.isRequested = real.isRequested;
        event.reason = real.reason;
        return event;
    }
    static std::string Describe(const std::vector<Naive::Event>& events)
    {
        static const char* const kinds[] = {"Accepted", "ChildCreated",  "Triggered",
                                            "Filled",   "Amended",       "Cancelled",
                                            "Rejected", "AmendRejected", "CancelRejected"};
        std::string text;
        for (const Naive::Event& event : events)
            text += fmt::format(
                "  {} {} of owner {}: {}@{} stop {}, {} executed, status {}, fill {}@{} {} {}, {}{}, "
                "at {} due {}\n",
                kinds[static_cast<int>(event.kind)], event.order, event.owner, event.volume,
                event.price.value_or(0), event.stop.value_or(0), event.executed,
                static_cast<int>(event.status), event.fillVolume, event.fillPrice.value_or(0),
                event.isMaker ? "maker" : "taker", static_cast<int>(event.cause),
                event.isRequested ? "requested " : "", event.reason, event.time / Second, event.due / Second);
        return text;
    }

    const Data _data;
    nxExactRandom _random;
    const bool _keepsLog;
    Naive::Options _options;
    nxMarketProduct _market{"SIM"};
    std::unique_ptr<nxSimulatedExchange> _exchange;
    std::unique_ptr<Naive> _naive;
    std::size_t _told = 0;  // of the naive one's events
    Naive::Level _quote[2] = {{false, 101, 5}, {true, 99, 5}};
    bool _hasQuote[2] = {false, false};
    bool _isOpen = false, _mayTrade = true, _hasTraded = false, _hasSizes = true;
    long long _time = 0, _lastChange = 0, _bar = 0, _nextBar = 0;
    std::vector<std::string> _log;
};

using Setup = std::tuple<const char*, Data, Naive::Fills>;

class nxExchangeNaive : public testing::TestWithParam<Setup>
{
};

constexpr int Steps = 200;
constexpr unsigned long long Seeds = 250;

std::string Compare(const Setup& setup, unsigned long long seed, bool keepsLog, std::size_t& fills,
                    std::size_t& orders)
{
    Pair pair(std::get<1>(setup), std::get<2>(setup), seed, keepsLog);
    for (int step = 0; step < Steps; ++step) {
        pair.Step();
        if (const std::string difference = pair.Compare(); !difference.empty())
            return fmt::format("seed {}, step {}\n{}\n{}", seed, step, pair.GetLog(), difference);
    }
    fills += pair.fills;
    orders += pair.orders;
    return {};
}

TEST_P(nxExchangeNaive, TellsTheSame)
{
    using Clock = std::chrono::steady_clock;
    const char* const soak = std::getenv("NX_SOAK_SECONDS");
    const Clock::time_point end = Clock::now() + std::chrono::seconds(soak != nullptr ? std::atoi(soak) : 0);
    unsigned int failures = 0;
    std::size_t fills = 0, orders = 0;
    for (unsigned long long seed = 1; seed <= Seeds || Clock::now() < end; ++seed) {
        if (Compare(GetParam(), seed, false, fills, orders).empty()) continue;
        ADD_FAILURE() << Compare(GetParam(), seed, true, fills, orders);
        if (++failures == 3) return;
    }
    RecordProperty("orders", static_cast<int>(orders));
    EXPECT_GT(orders, 15000u);
    EXPECT_GT(fills, 9000u);
}

constexpr Setup Setups[] = {
    {"QuotesTouch", Data::Quotes, Naive::Fills::Touch},
    {"QuotesCross", Data::Quotes, Naive::Fills::Cross},
    {"QuotesQueue", Data::Quotes, Naive::Fills::Queue},
    {"DepthTouch", Data::Depth, Naive::Fills::Touch},
    {"DepthCross", Data::Depth, Naive::Fills::Cross},
    {"DepthQueue", Data::Depth, Naive::Fills::Queue},
    {"BothTouch", Data::Both, Naive::Fills::Touch},
    {"BothCross", Data::Both, Naive::Fills::Cross},
    {"BothQueue", Data::Both, Naive::Fills::Queue},
    {"MinuteBars", Data::MinuteBars, Naive::Fills::Queue},
    {"BarsOfUnknownPeriod", Data::UnknownBars, Naive::Fills::Queue},
    {"DailyBars", Data::DailyBars, Naive::Fills::Queue},
};
INSTANTIATE_TEST_SUITE_P(All, nxExchangeNaive, testing::ValuesIn(Setups),
                         [](const auto& setup) { return std::get<0>(setup.param); });

}  // namespace
