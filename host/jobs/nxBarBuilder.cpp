#include "host/jobs/nxBarBuilder.h"

#include <algorithm>
#include <limits>

#include "host/feed/nxBarPeriod.h"

namespace {

constexpr long long Second = nxTime::NanosecondsPerSecond;
constexpr long long Day = nxTime::NanosecondsPerDay;
// Rows before it would begin before the first of all times.
constexpr long long Earliest = std::numeric_limits<long long>::min() + 2 * Day;
constexpr unsigned int LargestVolume = 0xFFFFFFFD;  // beyond lie the marks

// The longest that rows of the rule's own length can be apart.
long long GetLongestRow(const nxBarTerms& terms)
{
    constexpr long long weekend = 3 * Day;
    switch (terms.unit) {
        case nxBarUnit::Multiple:
            return terms.count * Second;
        case nxBarUnit::Clock:
            return std::min(terms.count * Second, Day / 2);
        case nxBarUnit::Session:
            return weekend;
        case nxBarUnit::Day:
            return std::max(weekend, terms.count * Day);
        case nxBarUnit::Week:
            return terms.count * 7 * Day;
        default:
            return terms.count * 31 * Day;
    }
}

// Towards the past.
long long GetSecond(long long time)
{
    return time / Second - (time % Second < 0 ? 1 : 0);
}

unsigned int Add(unsigned int sum, unsigned int volume)
{
    return sum + std::min(volume, LargestVolume - std::min(sum, LargestVolume));
}

}  // namespace

nxBarBuilder::nxBarBuilder(const nxBarTerms& terms, const nxTradingHours& hours, long long rowPeriod,
                           bool rowsBearStart)
    : _terms(terms), _span(terms, hours), _rowPeriod(rowPeriod), _rowsBearStart(rowsBearStart)
{
}

bool nxBarBuilder::CanFoldRows() const
{
    return !_terms.IsMadeOfTrades() && _rowPeriod <= GetLongestRow(_terms);
}

void nxBarBuilder::_Begin(const nxDecimal& open, long long time)
{
    _isEmpty = false;
    _trades = 0;
    _bar.SetTime(GetSecond(time));
    _bar.SetOpen(open);
    _bar.SetHigh(open);
    _bar.SetLow(open);
    _bar.SetVolume(0);
    _bar.SetBuyVolume(0);
    _bar.SetSellVolume(0);
}

const nxTickData* nxBarBuilder::_Finish()
{
    _isEmpty = true;
    _due = nxTime::Never;
    return &_bar;
}

const nxTickData* nxBarBuilder::Close(long long time)
{
    return time < _due ? nullptr : _Finish();
}

void nxBarBuilder::_Fold(const nxFeedBar& row, long long begin)
{
    if (_isEmpty) _Begin(row.open, begin);
    if (row.high > _bar.GetHigh()) _bar.SetHigh(row.high);
    if (row.low < _bar.GetLow()) _bar.SetLow(row.low);
    _bar.SetClose(row.close);
    _bar.SetVolume(Add(_bar.GetVolume(), row.volume.GetValue()));
}

const nxTickData* nxBarBuilder::AddRow(const nxFeedBar& row, long long time)
{
    if (time < Earliest) return nullptr;
    if (nxIsDailyBar(_rowPeriod)) return _AddDaily(row, time);
    if (!_span.Find(time - 1)) return nullptr;
    _Fold(row, _span.GetBegin());
    if (time >= _span.GetEnd() || _rowPeriod > _span.GetEnd() - time) return _Finish();
    // The row that ends the bar may be missing, but may also come at its very end.
    _due = _span.GetEnd() + 1;
    return nullptr;
}

// Such rows tell days, not hours.
const nxTickData* nxBarBuilder::_AddDaily(const nxFeedBar& row, long long time)
{
    const long long stamp = _rowsBearStart ? time - _rowPeriod : time;
    if (!_terms.IsOfDays()) {
        _Fold(row, stamp);
        return _Finish();
    }
    _span.FindDay(_rowsBearStart ? stamp : time - 1, stamp);
    _Fold(row, _span.GetBegin());
    if (_span.IsLastDay() || _rowPeriod > _span.GetEnd() - time) return _Finish();
    _due = _span.GetEnd() + 1;
    return nullptr;
}

bool nxBarBuilder::AddTrade(const nxDecimal& price, unsigned int volume, const nxBuySellEnum& side,
                            long long time)
{
    if (!_span.Find(time)) return false;
    if (_isEmpty) _Begin(price, _terms.IsMadeOfTrades() ? time : _span.GetBegin());
    ++_trades;
    if (price > _bar.GetHigh()) _bar.SetHigh(price);
    if (price < _bar.GetLow()) _bar.SetLow(price);
    _bar.SetClose(price);
    _bar.SetVolume(Add(_bar.GetVolume(), volume));
    if (side == nxBuySell_Buy) _bar.SetBuyVolume(Add(_bar.GetBuyVolume(), volume));
    if (side == nxBuySell_Sell) _bar.SetSellVolume(Add(_bar.GetSellVolume(), volume));
    _due = _span.GetEnd();
    return true;
}

bool nxBarBuilder::_IsFull() const
{
    switch (_terms.unit) {
        case nxBarUnit::Trade:
            return _trades >= _terms.count;
        case nxBarUnit::Lot:
            return _bar.GetVolume() >= _terms.count;
        case nxBarUnit::Price:
            return _bar.GetHigh() - _bar.GetLow() >= _terms.distance;
        default:
            return false;
    }
}
