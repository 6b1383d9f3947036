#pragma once

#include <fmt/format.h>

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "tests/host/nxExchangeFixture.h"
#include "tests/host/nxNaiveExchange.h"

// What a script can be told.
inline auto GetFields(const nxExchangeEvent& event)
{
    return std::tie(event.kind, event.order, event.owner, event.time, event.due, event.status, event.price,
                    event.stopPrice, event.volume, event.executed, event.fillPrice, event.fillVolume,
                    event.isMaker, event.cause, event.isRequested, event.reason);
}

// What requests name.
inline auto GetFields(const nxOrderTerms& terms)
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

// The exchange and a naive one side by side over a flow of sensible requests, which a source of choices
// makes: everything that is told, every place in a queue and every stop price must agree.
class nxExchangePair
{
public:
    enum class Data { Quotes, Depth, Both, MinuteBars, UnknownBars, DailyBars };
    // 0 to less than the limit, which is 256 at most.
    using Choose = std::function<unsigned int(unsigned int limit)>;

    nxExchangePair(Data data, const char* model, Choose choose, bool keepsLog);

    // Where both disagree, else all steps.
    int Run(int steps);

    std::string GetReport() const { return fmt::format("\n{}\n{}", fmt::join(_log, "\n"), _difference); }

    std::size_t fills = 0, orders = 0;

private:
    void Step();
    // Empty when both agree.
    std::string Compare();
    // The exchange may join a market that has moved for a while.
    void Begin();

    void Note(const auto&... fields)
    {
        if (!_keepsLog) return;
        _log.push_back(nxDateTime(_time / nxTime::NanosecondsPerSecond).GetAsString() +
                       ((' ' + Describe(fields)) + ...));
        if (_log.size() > 21) _log.erase(_log.begin() + 1);
    }

    unsigned int Below(unsigned int limit) { return _choose(limit); }
    bool OneOf(unsigned int count) { return Below(count) == 0; }
    nxDecimal GetPrice(int ticks) const { return nxDecimal::FromMantissa(100 + ticks * _tick, 0); }
    int Around(int spread);
    nxDecimal Near(int spread) { return GetPrice(Around(spread)); }
    // Ticks away from the middle, on the side's own.
    int Away(nxSide side, unsigned int limit);

    // --- Time

    void SetOpen(bool isOpen, long long time);
    void Advance(long long time);
    // The market opens and closes at its hours, before what is due then.
    void MoveTo(long long time);
    // False: the next bar is due.
    bool MoveTowardsBar();

    // --- The market

    void MoveMarket();
    void TellRow();
    // Mostly anew, and mostly told; the first time wholly.
    void Quote(nxSide side, nxDecimal& price, nxVolume& volume);
    void TellDepth(const std::vector<nxFeedLevel>& levels);

    // Bars come before all else that is due when they end.
    void TellBar();

    // --- Requests

    void SendNew();
    // Each fits to each, in whatever order changes arrive.
    static unsigned int GetLeastVolume(const nxOrderKind& kind)
    {
        return kind.execution == nxOrderExecution::Iceberg ? 4 : 1;
    }
    void SetPeaks(nxOrderTerms& terms);
    nxDateTime GetDate(long long days) const;

    // One of the latest orders, mostly one that lives; 0: none.
    unsigned int Pick();
    void Change(unsigned int id);
    void Cancel(unsigned int id);

    const Data _data;
    const Choose _choose;
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
