// The exchange beside a naive one over random flows of sensible requests: everything that is told, every
// place in a queue and every stop price must agree. A failure prints the seed and the last steps.
// NX_SOAK_SECONDS in the environment: each test goes on with more seeds for that long.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <span>
#include <tuple>

#include "tests/host/nxExchangeFixture.h"
#include "tests/host/nxNaiveExchange.h"

namespace {

using enum nxOrderExecution;

constexpr long long Second = nxTime::NanosecondsPerSecond;
constexpr long long Hour = 3600 * Second;
constexpr long long Day = nxTime::NanosecondsPerDay;
constexpr long long FirstDay = 19'724;  // since 1970: 2 January 2024
constexpr long long Opening = 9 * Hour;
constexpr long long Closing = nxNaiveExchange::Closing;

enum class Data { Quotes, Depth, Both, MinuteBars, UnknownBars, DailyBars };

// What a script can be told.
auto GetFields(const nxExchangeEvent& event)
{
    return std::tie(event.kind, event.order, event.owner, event.time, event.due, event.status, event.price,
                    event.stopPrice, event.volume, event.executed, event.fillPrice, event.fillVolume,
                    event.isMaker, event.cause, event.isRequested, event.reason);
}

// What requests name.
auto GetFields(const nxOrderTerms& terms)
{
    return std::tie(terms.volume, terms.price, terms.stopPrice, terms.icebergMinPeak, terms.icebergThreshold,
                    terms.bracketProfit, terms.bracketStopLoss, terms.bracketStopLimit, terms.expiry);
}

// For a failure: the fields in their order.
std::string Describe(const auto& field)
{
    if constexpr (requires { field.GetAsString(); })
        return field.GetAsString().empty() ? "." : field.GetAsString();
    else if constexpr (requires { GetFields(field); })
        return std::apply([](const auto&... all) { return ((Describe(all) + ' ') + ...); }, GetFields(field));
    else if constexpr (std::is_enum_v<std::remove_cvref_t<decltype(field)>>)
        return std::to_string(static_cast<int>(field));
    else
        return fmt::format("{}", field);
}

std::string DescribeAll(std::span<const nxExchangeEvent> events)
{
    std::string text;
    for (const nxExchangeEvent& event : events)
        text += Describe(event) + '\n';
    return text;
}

class Pair
{
public:
    Pair(Data data, const char* model, unsigned long long seed, bool keepsLog)
        : _data(data), _random(seed), _keepsLog(keepsLog)
    {
        nxExchangeOptions options;
        options.fills = nxFillModel::Find(model);
        const std::string queues[] = {"even", "back", fmt::format("power:{}", 1 + Below(4))};
        const std::string& queue = queues[Below(3)];
        EXPECT_TRUE(options.queue.SetFromText(queue));
        _tick = 1 + static_cast<int>(OneOf(8));
        if (OneOf(2)) options.request.least = Below(5) * Second;
        if (OneOf(2)) options.answer.least = Below(5) * Second;
        _product.tickSize = nxDecimal::FromMantissa(_tick, 0);
        _product.isOfBars = data >= Data::MinuteBars;
        _product.barPeriod = data == Data::MinuteBars ? 60 * Second : data == Data::DailyBars ? Day : 0;
        if (_product.isOfBars && OneOf(2)) options.participation = 1 + Below(100);
        _hasSizes = !OneOf(10);
        if (OneOf(3)) {
            EXPECT_EQ(nxTradingHours::SetFromText("09:00-17:00", _product.hours), nullptr);
        }
        options.selfTrade = OneOf(3) ? nxSelfTrade::Meet : static_cast<nxSelfTrade>(Below(4));
        options.walksBeyond = OneOf(2);
        options.lateTrades = OneOf(2) ? (1 + Below(4)) * Second : 0;
        _real.emplace(options, _product.tickSize, _product.hours, _product.barPeriod, _product.isOfBars);
        _naive.emplace(options, _product);
        Note("model, queue, request, answer, participation, hours, self-trade, walks, late:", model, queue,
             options.request.least / Second, options.answer.least / Second, options.participation,
             !_product.hours.IsEmpty(), options.selfTrade, options.walksBeyond, options.lateTrades / Second);
        Begin();
    }

    // Where both disagree, else all steps.
    int Run(int steps)
    {
        for (int step = 0; step < steps; ++step) {
            Step();
            _difference = Compare();
            if (!_difference.empty()) return step;
        }
        return steps;
    }

    std::string GetReport() const { return fmt::format("\n{}\n{}", fmt::join(_log, "\n"), _difference); }

    std::size_t fills = 0, orders = 0;

private:
    void Step()
    {
        const bool moves = _product.isOfBars ? !MoveTowardsBar() : Below(10) < 4;
        const unsigned int choice = Below(6);
        const unsigned int id = Pick();
        if (moves) {
            MoveMarket();
        } else if (choice < 3 || id == 0) {
            SendNew();
        } else {
            choice < 5 ? Change(id) : Cancel(id);
        }
        Advance(_time);
    }

    // Empty when both agree.
    std::string Compare()
    {
        const auto isSame = [](const nxExchangeEvent& a, const nxExchangeEvent& b) {
            return GetFields(a) == GetFields(b);
        };
        std::vector<nxExchangeEvent> told;
        for (nxExchangeEvent event; _real->exchange.PopEvent(event, _time);)
            told.push_back(event);
        const std::size_t begin = _told;
        while (_told < _naive->told.size() && _naive->told[_told].due <= _time)
            ++_told;
        const auto expected = std::span(_naive->told).subspan(begin, _told - begin);
        if (!std::ranges::equal(told, expected, isSame))
            return "told:\n" + DescribeAll(told) + "naive:\n" + DescribeAll(expected);
        for (const nxExchangeEvent& event : told)
            fills += event.kind == nxExchangeEvent::Kind::Filled;
        orders = _naive->GetCount();
        if (_real->exchange.GetOrderCount() != orders) return "not the same orders";
        for (const unsigned int id : _naive->GetLine()) {
            const nxNaiveExchange::Order& naive = _naive->Get(id);
            const nxExchangeOrder& real = _real->exchange.GetOrder(id);
            const bool queues = !_product.isOfBars && naive.isResting && !naive.kind.isMarket;
            if (real.terms.stopPrice != naive.terms.stopPrice || (queues && real.ahead != naive.ahead))
                return fmt::format("order {}: stop {}, ahead {}; naive: {}, {}", id,
                                   real.terms.stopPrice.GetAsString(), real.ahead.GetAsString(),
                                   naive.terms.stopPrice.GetAsString(), naive.ahead.GetAsString());
        }
        return {};
    }

    // The exchange may join a market that has moved for a while.
    void Begin()
    {
        _bar = _time = FirstDay * Day + (_data == Data::DailyBars ? 0 : 10 * Hour);
        const bool joins = !_product.isOfBars && OneOf(4);
        if (!joins) SetOpen(true, _time);
        if (_data == Data::Depth || _data == Data::Both)
            TellDepth({{GetPrice(-1), 5, nxSide::Buy}, {GetPrice(1), 5, nxSide::Sell}});
        for (unsigned int i = 0, moves = Below(joins ? 20 : 2); i < moves && !_product.isOfBars; ++i)
            MoveMarket();
        if (!joins) return;
        _mayTrade = false;
        MoveMarket();
        _mayTrade = true;
        _real->exchange.Join(0, _time);
        _naive->Join(_time);
        _isOpen = true;
        Note("joined");
    }

    void Note(const auto&... fields)
    {
        if (!_keepsLog) return;
        _log.push_back(nxDateTime(_time / Second).GetAsString() + ((' ' + Describe(fields)) + ...));
        if (_log.size() > 21) _log.erase(_log.begin() + 1);
    }

    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(_random.GetBelow(limit)); }
    bool OneOf(unsigned int count) { return Below(count) == 0; }
    nxDecimal GetPrice(int ticks) const { return nxDecimal::FromMantissa(100 + ticks * _tick, 0); }
    int Around(int spread)
    {
        return static_cast<int>(Below(2 * static_cast<unsigned int>(spread) + 1)) - spread;
    }
    nxDecimal Near(int spread) { return GetPrice(Around(spread)); }
    // Ticks away from the middle, on the side's own.
    int Away(nxSide side, unsigned int limit)
    {
        return static_cast<int>(nxGetSigned(side, -static_cast<long long>(Below(limit))));
    }

    // --- Time

    void SetOpen(bool isOpen, long long time)
    {
        _isOpen = isOpen;
        _time = time;
        isOpen ? _real->exchange.OnOpen(0, time) : _real->exchange.OnClose(0, time);
        isOpen ? _naive->OnOpen(time) : _naive->OnClose(time);
        Note(isOpen ? "open" : "close");
    }
    void Advance(long long time)
    {
        _real->exchange.Advance(time);
        _naive->Advance(time, time);
    }
    // The market opens and closes at its hours, before what is due then.
    void MoveTo(long long time)
    {
        const bool hasHours = !_product.hours.IsEmpty() && _data != Data::DailyBars;
        for (long long day = _time / Day * Day; hasHours && day <= time; day += Day)
            for (const long long change : {day + Opening, day + Closing}) {
                if (change <= _lastChange || change > time || change < _time) continue;
                _lastChange = change;
                if ((change == day + Opening) == _isOpen) continue;
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
        if (_product.isOfBars) return TellBar();
        MoveTo(_time + (OneOf(40) ? Below(10) * Hour : Below(4) * Second));
        if (_data == Data::Depth ? !_mayTrade || !OneOf(3) : _data == Data::Both && OneOf(3)) {
            std::vector<nxFeedLevel> levels(1 + Below(3));
            for (nxFeedLevel& level : levels) {
                level.side = nxSides[Below(2)];
                level.price = GetPrice(Away(level.side, 5) + static_cast<int>(Below(2)));
                level.volume = OneOf(3) ? 0 : Below(12);
            }
            TellDepth(levels);
        } else {
            TellRow();
        }
    }

    void TellRow()
    {
        nxFeedQuote row = MakeNoQuote();
        const bool isTrade = _mayTrade && (_data == Data::Depth || OneOf(2));
        if (isTrade) {
            const bool isAtLast = _hasTraded && OneOf(8);
            _hasTraded = true;
            if (!isAtLast) row.last = Near(4);
            if (isAtLast || !OneOf(8)) row.lastVolume = 1 + Below(12);
            const nxBuySellEnum sides[] = {{}, nxBuySellEnum(nxBuySell_Buy), nxBuySellEnum(nxBuySell_Sell)};
            row.side = sides[Below(3)];
        }
        if (_data != Data::Depth && (!isTrade || OneOf(2))) {
            Quote(nxSide::Buy, row.bid, row.bidVolume);
            Quote(nxSide::Sell, row.ask, row.askVolume);
        }
        Note("row", row.last, row.lastVolume, row.side, row.bid, row.bidVolume, row.ask, row.askVolume);
        _real->Quote(row, _time);
        _naive->OnQuote(row, _time);
    }
    // Mostly anew, and mostly told; the first time wholly.
    void Quote(nxSide side, nxDecimal& price, nxVolume& volume)
    {
        nxFeedLevel& quote = _quote[side];
        const bool isFirst = quote.price.IsNull();
        if (isFirst || !OneOf(3)) quote = {GetPrice(Away(side, 4)), Below(12), side};
        if (isFirst || !OneOf(4)) price = quote.price;
        if (_hasSizes && (isFirst || !OneOf(4))) volume = quote.volume;
    }

    void TellDepth(const std::vector<nxFeedLevel>& levels)
    {
        for (const nxFeedLevel& level : levels)
            Note("depth", nxGetText(level.side), level.price, level.volume);
        _real->Depth(levels, _time);
        _naive->OnDepth(levels, _time);
    }

    // Bars come before all else that is due when they end.
    void TellBar()
    {
        MoveTo(_nextBar - 1);
        _time = _bar = _nextBar;
        const int open = Around(4), close = Around(4);
        const int high = std::max(open, close) + static_cast<int>(Below(3));
        const int low = std::min(open, close) - static_cast<int>(Below(3));
        nxFeedBar bar{GetPrice(open), GetPrice(high), GetPrice(low), GetPrice(close), {}};
        if (!OneOf(4)) bar.volume = Below(60);
        Note("bar", bar.open, bar.high, bar.low, bar.close, bar.volume);
        _real->Bar(bar, _time);
        _naive->OnBar(bar, _time);
        _real->exchange.AdvanceAmongBars(_time);
        _naive->Advance(_time, _time - 1);
        MoveTo(_time);
    }

    // --- Requests

    void SendNew()
    {
        static constexpr nxOrderExecution executions[] = {
            None, None, None,    None,    ImmediateOrCancel, FillOrKill, FillOrKill,
            Stop, Stop, Iceberg, Iceberg, TrailingStop,      Bracket,    Bracket};
        nxOrderKind kind;
        kind.owner = Below(2);
        kind.side = nxSides[Below(2)];
        kind.execution = executions[Below(std::size(executions))];
        kind.crossProtected = OneOf(kind.IsStop() || kind.execution == Bracket ? 12 : 6);
        if (!kind.IsImmediate()) kind.duration = static_cast<nxOrderDuration>(Below(3));
        if (kind.execution == None && OneOf(_isOpen ? 20 : 2))
            kind.duration = OneOf(2) ? nxOrderDuration::Open : nxOrderDuration::PreOpen;
        kind.isMarket = kind.execution != Iceberg && OneOf(5);
        nxOrderTerms terms;
        terms.volume = GetLeastVolume(kind) + Below(9);
        if (!kind.isMarket) terms.price = Near(5);
        if (kind.IsStop()) terms.stopPrice = Near(6);
        if (kind.execution == Iceberg) SetPeaks(terms);
        if (kind.execution == Bracket) {
            if (!OneOf(4)) terms.bracketProfit = 1 + Below(4);
            if (!OneOf(4) || !terms.bracketProfit.IsValid()) terms.bracketStopLoss = 1 + Below(4);
            terms.bracketStopIsLimit = OneOf(3);
            if (terms.bracketStopIsLimit == true && OneOf(2)) terms.bracketStopLimit = Below(3);
            terms.bracketStopTrails = OneOf(3);
        }
        if (kind.duration == nxOrderDuration::Date) terms.expiry = GetDate(Below(3));
        Note("new", kind.owner, nxGetText(kind.side), nxGetTypeText(kind.isMarket), nxGetText(kind.execution),
             nxGetText(kind.duration), kind.crossProtected, terms, terms.bracketStopIsLimit.value_or(false),
             terms.bracketStopTrails.value_or(false));
        _real->exchange.Submit(kind, terms, _time);
        _naive->Submit(kind, terms, _time);
    }
    // Each fits to each, in whatever order changes arrive.
    static unsigned int GetLeastVolume(const nxOrderKind& kind) { return kind.execution == Iceberg ? 4 : 1; }
    void SetPeaks(nxOrderTerms& terms)
    {
        if (!terms.icebergMinPeak.IsNoChange() || OneOf(3)) terms.icebergMinPeak = 2 + Below(3);
        if (OneOf(3)) terms.icebergThreshold = Below(2);
    }
    nxDateTime GetDate(long long days) const { return (_time / Day + days) * (Day / Second); }

    // One of the latest orders, mostly one that lives; 0: none.
    unsigned int Pick()
    {
        const std::vector<unsigned int>& line = _naive->GetLine();
        if (!line.empty() && !OneOf(8)) return line[Below(static_cast<unsigned int>(line.size()))];
        const unsigned int count = _naive->GetCount();
        return count == 0 ? 0 : count - Below(std::min(count, 10u));
    }
    void Change(unsigned int id)
    {
        const nxNaiveExchange::Order& order = _naive->Get(id);
        nxOrderTerms changes = nxOrderTerms::MakeNoChange();
        if (OneOf(2)) changes.volume = std::max(GetLeastVolume(order.kind), order.executed + Below(8));
        if (!order.kind.isMarket && OneOf(2)) changes.price = Near(5);
        if (order.kind.IsStop() && OneOf(order.triggered ? 40 : 2)) changes.stopPrice = Near(6);
        if (order.kind.execution == Iceberg) SetPeaks(changes);
        if (order.kind.execution == Bracket && OneOf(4)) changes.bracketProfit = 1 + Below(4);
        if (order.kind.execution == Bracket && OneOf(4)) changes.bracketStopLoss = 1 + Below(4);
        if (order.kind.duration == nxOrderDuration::Date && OneOf(4))
            changes.expiry = GetDate(static_cast<long long>(Below(4)) - 1);
        Note("amend", id, changes);
        _real->exchange.Amend(id, changes, _time);
        _naive->Send(nxOrderRequest::Amend, id, changes, _time);
    }
    void Cancel(unsigned int id)
    {
        Note("cancel", id);
        _real->exchange.Cancel(id, _time);
        _naive->Send(nxOrderRequest::Cancel, id, {}, _time);
    }

    const Data _data;
    nxExactRandom _random;
    const bool _keepsLog;
    int _tick = 1;
    nxVenue::Product _product;
    std::optional<nxExchangeFixture> _real;
    std::optional<nxNaiveExchange> _naive;
    std::size_t _told = 0;  // of the naive one's events
    nxBySide<nxFeedLevel> _quote;
    bool _isOpen = false, _mayTrade = true, _hasTraded = false, _hasSizes = true;
    long long _time = 0, _lastChange = 0, _bar = 0, _nextBar = 0;
    std::vector<std::string> _log;
    std::string _difference;
};

using Setup = std::tuple<const char*, Data, const char*>;

class nxExchangeNaive : public testing::TestWithParam<Setup>
{
};

constexpr int Steps = 200;
constexpr unsigned long long Seeds = 250;

TEST_P(nxExchangeNaive, TellsTheSame)
{
    using Clock = std::chrono::steady_clock;
    const char* const soak = std::getenv("NX_SOAK_SECONDS");
    const Clock::time_point end = Clock::now() + std::chrono::seconds(soak != nullptr ? std::atoi(soak) : 0);
    const auto& [name, data, model] = GetParam();
    std::size_t fills = 0, orders = 0;
    for (unsigned long long seed = 1; seed <= Seeds || Clock::now() < end; ++seed) {
        Pair pair(data, model, seed, false);
        if (const int step = pair.Run(Steps); step < Steps) {
            Pair again(data, model, seed, true);
            again.Run(Steps);
            FAIL() << "seed " << seed << ", step " << step << again.GetReport();
        }
        fills += pair.fills;
        orders += pair.orders;
    }
    RecordProperty("orders", static_cast<int>(orders));
    EXPECT_GT(orders, 15000u);
    EXPECT_GT(fills, 9000u);
}

constexpr Setup Setups[] = {
    {"QuotesTouch", Data::Quotes, "touch"},
    {"QuotesCross", Data::Quotes, "cross"},
    {"QuotesQueue", Data::Quotes, "queue"},
    {"DepthTouch", Data::Depth, "touch"},
    {"DepthCross", Data::Depth, "cross"},
    {"DepthQueue", Data::Depth, "queue"},
    {"BothTouch", Data::Both, "touch"},
    {"BothCross", Data::Both, "cross"},
    {"BothQueue", Data::Both, "queue"},
    {"MinuteBars", Data::MinuteBars, "queue"},
    {"BarsOfUnknownPeriod", Data::UnknownBars, "queue"},
    {"DailyBars", Data::DailyBars, "queue"},
};
INSTANTIATE_TEST_SUITE_P(All, nxExchangeNaive, testing::ValuesIn(Setups),
                         [](const auto& setup) { return std::get<0>(setup.param); });

}  // namespace
