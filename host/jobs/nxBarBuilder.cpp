#include "host/jobs/nxBarBuilder.h"

#include <algorithm>

#include "host/feed/nxBarPeriod.h"

namespace {

constexpr long long Second = nxTime::NanosecondsPerSecond;
constexpr long long Minute = 60 * Second;
constexpr long long Hour = 60 * Minute;
constexpr long long Day = 24 * Hour;
// What recorded times reach, without the outermost days, whose bars would begin or end beyond.
constexpr long long Earliest = std::numeric_limits<long long>::min() + 2 * Day;
constexpr long long Latest = nxTime::Never - 2 * Day;
constexpr unsigned int LargestVolume = 0xFFFFFFFD;  // beyond lie the marks

long long GetLength(const nxTickDataPeriodEnum& period)
{
    switch (period.GetValue()) {
        case nxTickDataPeriod_Minute:
            return Minute;
        case nxTickDataPeriod_5Minute:
            return 5 * Minute;
        case nxTickDataPeriod_10Minute:
            return 10 * Minute;
        case nxTickDataPeriod_30Minute:
            return 30 * Minute;
        case nxTickDataPeriod_Hour:
            return Hour;
        default:
            return 0;
    }
}

// Division towards the past.
long long Floor(long long time, long long length)
{
    const long long rest = time % length;
    return time - (rest < 0 ? rest + length : rest);
}

unsigned int Add(unsigned int sum, unsigned int volume)
{
    return sum + std::min(volume, LargestVolume - std::min(sum, LargestVolume));
}

}  // namespace

nxBarBuilder::nxBarBuilder(const nxTickDataPeriodEnum& period, const nxTradingHours& hours,
                           long long rowPeriod, bool rowsBearStart)
    : _length(GetLength(period)), _hours(hours), _rowPeriod(rowPeriod), _rowsBearStart(rowsBearStart)
{
}

bool nxBarBuilder::CanFoldRows() const
{
    return _rowPeriod <= (_length == 0 ? 3 * Day : _length);
}

bool nxBarBuilder::_FindSpan(long long time)
{
    if (time >= _begin && time < _end) return true;
    if (time < Earliest || time > Latest) return false;
    // Nearly always it is the one behind.
    if (_length != 0 && time >= _end && time - _length < _end) {
        _begin = _end;
        _end += _length;
        return true;
    }
    const long long length = _length == 0 ? Day : _length;
    if (_length == 0 && !_hours.IsEmpty()) {
        if (!_hours.IsOpen(time)) return false;
        _end = _hours.GetNextChange(time);
        _begin = _hours.GetLastChange(time);
        if (_end != nxTime::Never) return true;
    }
    _begin = Floor(time, length);
    _end = _begin + length;
    return true;
}

void nxBarBuilder::_Begin(const nxDecimal& open)
{
    _isEmpty = false;
    _bar.SetTime(Floor(_begin, Second) / Second);
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

const nxTickData* nxBarBuilder::AddRow(const nxFeedBar& row, long long time)
{
    if (time < Earliest) return nullptr;
    const bool isSession = _length == 0 && nxIsDailyBar(_rowPeriod);
    if (isSession) {
        _begin = _rowsBearStart ? time - _rowPeriod : time;
    } else if (!_FindSpan(time - 1)) {
        return nullptr;
    }
    if (_isEmpty) _Begin(row.open);
    if (row.high > _bar.GetHigh()) _bar.SetHigh(row.high);
    if (row.low < _bar.GetLow()) _bar.SetLow(row.low);
    _bar.SetClose(row.close);
    _bar.SetVolume(Add(_bar.GetVolume(), row.volume.GetValue()));
    if (isSession || time >= _end || _rowPeriod > _end - time) return _Finish();
    // The row that ends the bar may be missing, but may also come at its very end.
    _due = _end + 1;
    return nullptr;
}

bool nxBarBuilder::AddTrade(const nxDecimal& price, unsigned int volume, const nxBuySellEnum& side,
                            long long time)
{
    if (!_FindSpan(time)) return false;
    if (_isEmpty) _Begin(price);
    if (price > _bar.GetHigh()) _bar.SetHigh(price);
    if (price < _bar.GetLow()) _bar.SetLow(price);
    _bar.SetClose(price);
    _bar.SetVolume(Add(_bar.GetVolume(), volume));
    if (side == nxBuySell_Buy) _bar.SetBuyVolume(Add(_bar.GetBuyVolume(), volume));
    if (side == nxBuySell_Sell) _bar.SetSellVolume(Add(_bar.GetSellVolume(), volume));
    _due = _end;
    return true;
}
