#include "tests/host/nxExchangePair.h"

#include <cstdlib>

namespace {

using enum nxOrderExecution;

constexpr long long Second = nxTime::NanosecondsPerSecond;
constexpr long long Hour = 3600 * Second;
constexpr long long Day = nxTime::NanosecondsPerDay;
constexpr long long FirstDay = 19'724;  // since 1970: 2 January 2024
constexpr long long Opening = 9 * Hour;
constexpr long long Closing = nxNaiveExchange::Closing;

void Require(bool holds)
{
    if (!holds) std::abort();
}

std::string DescribeAll(std::span<const nxExchangeEvent> events)
{
    std::string text;
    for (const nxExchangeEvent& event : events)
        text += Describe(event) + '\n';
    return text;
}

}  // namespace

nxExchangePair::nxExchangePair(Data data, const char* model, Choose choose, bool keepsLog)
    : _data(data), _choose(std::move(choose)), _keepsLog(keepsLog)
{
    nxExchangeOptions options;
    options.fills = nxFillModel::Find(model);
    const std::string queues[] = {"even", "back", fmt::format("power:{}", 1 + Below(4))};
    const std::string& queue = queues[Below(3)];
    Require(options.queue.SetFromText(queue));
    _tick = 1 + static_cast<int>(OneOf(8));
    if (OneOf(2)) options.request.least = Below(5) * Second;
    if (OneOf(2)) options.answer.least = Below(5) * Second;
    _product.tickSize = nxDecimal::FromMantissa(_tick, 0);
    _product.isOfBars = data >= Data::MinuteBars;
    _product.barPeriod = data == Data::MinuteBars ? 60 * Second : data == Data::DailyBars ? Day : 0;
    if (_product.isOfBars && OneOf(2)) options.participation = 1 + Below(100);
    _hasSizes = !OneOf(10);
    if (OneOf(3)) Require(nxTradingHours::SetFromText("09:00-17:00", _product.hours) == nullptr);
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

int nxExchangePair::Run(int steps)
{
    for (int step = 0; step < steps; ++step) {
        Step();
        _difference = Compare();
        if (!_difference.empty()) return step;
    }
    return steps;
}

void nxExchangePair::Step()
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

std::string nxExchangePair::Compare()
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

void nxExchangePair::Begin()
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

int nxExchangePair::Around(int spread)
{
    return static_cast<int>(Below(2 * static_cast<unsigned int>(spread) + 1)) - spread;
}

int nxExchangePair::Away(nxSide side, unsigned int limit)
{
    return static_cast<int>(nxGetSigned(side, -static_cast<long long>(Below(limit))));
}

void nxExchangePair::SetOpen(bool isOpen, long long time)
{
    _isOpen = isOpen;
    _time = time;
    isOpen ? _real->exchange.OnOpen(0, time) : _real->exchange.OnClose(0, time);
    isOpen ? _naive->OnOpen(time) : _naive->OnClose(time);
    Note(isOpen ? "open" : "close");
}

void nxExchangePair::Advance(long long time)
{
    _real->exchange.Advance(time);
    _naive->Advance(time, time);
}

void nxExchangePair::MoveTo(long long time)
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

bool nxExchangePair::MoveTowardsBar()
{
    const long long unit = _data == Data::DailyBars ? 6 * Hour : 15 * Second;
    if (_nextBar <= _time) _nextBar = _bar + 4 * unit * (OneOf(8) ? 1 + Below(6) : 1);
    const long long time = _time + unit * Below(2);
    if (time >= _nextBar) return false;
    MoveTo(time);
    return true;
}

void nxExchangePair::MoveMarket()
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

void nxExchangePair::TellRow()
{
    nxFeedQuote row = MakeNoQuote();
    const bool isTrade = _mayTrade && (_data == Data::Depth || OneOf(2));
    if (isTrade) {
        const bool isAtLast = _hasTraded && OneOf(8);
        _hasTraded = true;
        if (!isAtLast) row.last = Near(4);
        if (isAtLast || !OneOf(8)) row.lastVolume = 1 + Below(12);
        constexpr unsigned int sides[] = {nxEnum_Undefined, nxBuySell_Buy, nxBuySell_Sell};
        row.side = sides[Below(3)];
    }
    if (_data != Data::Depth && (!isTrade || OneOf(2))) {
        Quote(nxSide::Buy, row.bid, row.bidVolume);
        Quote(nxSide::Sell, row.ask, row.askVolume);
    }
    Note("row", row.last, row.lastVolume, nxBuySellEnum(row.side), row.bid, row.bidVolume, row.ask,
         row.askVolume);
    _real->Quote(row, _time);
    _naive->OnQuote(row, _time);
}

void nxExchangePair::Quote(nxSide side, nxDecimal& price, nxVolume& volume)
{
    nxFeedLevel& quote = _quote[side];
    const bool isFirst = quote.price.IsNull();
    if (isFirst || !OneOf(3)) quote = {GetPrice(Away(side, 4)), Below(12), side};
    if (isFirst || !OneOf(4)) price = quote.price;
    if (_hasSizes && (isFirst || !OneOf(4))) volume = quote.volume;
}

void nxExchangePair::TellDepth(const std::vector<nxFeedLevel>& levels)
{
    for (const nxFeedLevel& level : levels)
        Note("depth", nxGetText(level.side), level.price, level.volume);
    _real->Depth(levels, _time);
    _naive->OnDepth(levels, _time);
}

void nxExchangePair::TellBar()
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

void nxExchangePair::SendNew()
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

void nxExchangePair::SetPeaks(nxOrderTerms& terms)
{
    if (!terms.icebergMinPeak.IsNoChange() || OneOf(3)) terms.icebergMinPeak = 2 + Below(3);
    if (OneOf(3)) terms.icebergThreshold = Below(2);
}

nxDateTime nxExchangePair::GetDate(long long days) const
{
    return (_time / Day + days) * (Day / Second);
}

unsigned int nxExchangePair::Pick()
{
    const std::vector<unsigned int>& line = _naive->GetLine();
    if (!line.empty() && !OneOf(8)) return line[Below(static_cast<unsigned int>(line.size()))];
    const unsigned int count = _naive->GetCount();
    return count == 0 ? 0 : count - Below(std::min(count, 10u));
}

void nxExchangePair::Change(unsigned int id)
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

void nxExchangePair::Cancel(unsigned int id)
{
    Note("cancel", id);
    _real->exchange.Cancel(id, _time);
    _naive->Send(nxOrderRequest::Cancel, id, {}, _time);
}
