#include "host/feed/nxImportedProduct.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/time/nxTime.h"
#include "host/feed/nxBarPeriod.h"
#include "host/feed/nxFeedTime.h"

namespace {

constexpr std::size_t MoveCount = 101;            // whose median a jump is measured by
constexpr double OutlierMoves = 20;               // medians that an outlier is away
constexpr long long TickPause = 600'000'000'000;  // without a row within a day, which is told

std::string ShowTime(long long time)
{
    return nxFeedTime::GetAsString(time).substr(0, 17);
}

std::string ShowLength(long long nanoseconds)
{
    const long long seconds = nanoseconds / nxTime::NanosecondsPerSecond;
    return fmt::format("{}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

// Rows of a day bear its date; what else ends at midnight is of the day before.
long long GetDay(long long time, long long period)
{
    const bool isDate = nxIsDailyBar(period) || (period == 0 && time % nxTime::NanosecondsPerDay == 0);
    return (isDate ? time : time - 1) / nxTime::NanosecondsPerDay;
}

bool IsWeekday(long long day)
{
    const long long weekday = ((day + 4) % 7 + 7) % 7;  // 0: Sunday
    return weekday != 0 && weekday != 6;
}

}  // namespace

nxImportedProduct::nxImportedProduct(nxDataSet::File file, const std::string& header, const std::string& path,
                                     long long window)
    : _file(std::move(file)),
      _packed(path),
      _window(window),
      _isPeriodGiven(_file.period != 0),
      _newest(std::numeric_limits<long long>::min()),
      _written(_newest)
{
    static_cast<void>(_packed.Write(header + "\n"));
}

bool nxImportedProduct::Add(Row row)
{
    if (row.time < _newest) {
        _sorted.Add(row.place);
        if (row.time < _written) {
            _error = fmt::format(
                "{}: {} comes {} after {}, which is more than --sort-window; sort the file, or "
                "give a longer window",
                row.place, ShowTime(row.time), ShowLength(_newest - row.time), ShowTime(_newest));
            return false;
        }
    }
    _newest = std::max(_newest, row.time);
    const auto place = std::find_if(_waiting.rbegin(), _waiting.rend(),
                                    [&](const Row& other) { return other.time <= row.time; });
    _waiting.insert(place.base(), std::move(row));
    // Also rows of one time: a later row may still be an earlier one's twin.
    while (!_waiting.empty() && _newest - _waiting.front().time > _window) {
        if (!_Write(_waiting.front())) return false;
        _waiting.pop_front();
    }
    return true;
}

bool nxImportedProduct::Finish()
{
    for (const Row& row : _waiting)
        if (!_Write(row)) return false;
    _waiting.clear();
    if (_packed.Finish()) return true;
    _error = _packed.GetError();
    return false;
}

bool nxImportedProduct::_Write(const Row& row)
{
    const bool isBar = _file.kind == "bars";
    if (row.text == _lastText) {
        _twice.Add(row.place);
        if (isBar) return true;  // two trades or levels may be alike, two bars are one
    } else if (isBar && _file.rows != 0 && row.time == _written) {
        _error = fmt::format("{}: a second bar at {}, which differs from that of {}", row.place,
                             ShowTime(row.time), _lastPlace);
        return false;
    }
    _Watch(row);
    if (_file.rows++ == 0) _file.first = row.time;
    _file.last = _written = row.time;
    _lastText = row.text;
    _lastPlace = row.place;
    if (_packed.Write(row.text)) return true;
    _error = _packed.GetError();
    return false;
}

void nxImportedProduct::_Watch(const Row& row)
{
    _WatchTime(row);
    if (!row.price.IsValid()) return;
    if (row.price == nxDecimalZero) _zero.Add(row.place);
    if (row.price < nxDecimalZero) _negative.Add(row.place);
    _WatchPrice(row);
}

void nxImportedProduct::_WatchTime(const Row& row)
{
    const bool isBar = _file.kind == "bars";
    if (isBar && !_isPeriodGiven && _file.rows != 0 && row.time > _written &&
        (_file.period == 0 || row.time - _written < _file.period))
        _file.period = row.time - _written;
    Day& day = _days[GetDay(row.time, _file.period)];
    const long long distance = row.time - day.last;
    const long long most = isBar ? _file.period : TickPause;
    if (day.rows++ != 0 && most != 0 && distance > most) {
        ++day.gaps;
        if (distance > day.longest) {
            day.longest = distance;
            day.longestEnd = row.time;
        }
    }
    day.last = row.time;
}

// A price far off that comes back at once. It is known by the row after it.
void nxImportedProduct::_WatchPrice(const Row& row)
{
    const double price = row.price.GetAsDouble();
    const double move = _last == 0 ? 0 : price - _last;
    if (_jump != 0 && _jump * move < 0 && std::abs(move) > OutlierMoves * _median &&
        std::abs(price - _before) < std::abs(_jump) / 2)
        _outliers.Add(_jumpPlace);
    _jump = _median != 0 && std::abs(move) > OutlierMoves * _median ? move : 0;
    if (_jump != 0) _jumpPlace = row.place;
    _before = _last;
    _last = price;
    if (move == 0) return;
    if (_moves.size() < MoveCount)
        _moves.push_back(std::abs(move));
    else
        _moves[_moveCount % MoveCount] = std::abs(move);
    if (++_moveCount % MoveCount != 0) return;
    std::vector<double> sorted = _moves;
    std::ranges::nth_element(sorted, sorted.begin() + MoveCount / 2);
    _median = sorted[MoveCount / 2];
}

void nxImportedProduct::NoteSize(const nxDecimal& size)
{
    if (_largestSize < size) _largestSize = size;
    if (size.GetDecimalPlaces() <= _sizePlaces) return;
    nxDecimal significant = size;
    significant.Normalise(_sizePlaces);
    _sizePlaces = significant.GetDecimalPlaces();
    const nxDecimal lot = nxDecimal::FromMantissa(1, _sizePlaces);
    _file.lotSize = lot;
}

std::string nxImportedProduct::_RemarkGaps() const
{
    unsigned long long gaps = 0, days = 0, missing = 0;
    const Day* worst = nullptr;
    std::string firstMissing;
    long long before = 0;
    for (const auto& [date, day] : _days) {
        gaps += day.gaps;
        if (day.gaps != 0) ++days;
        if (day.gaps != 0 && (worst == nullptr || day.longest > worst->longest)) worst = &day;
        for (long long between = before + 1; before != 0 && between < date; ++between) {
            if (!IsWeekday(between)) continue;
            if (missing++ == 0)
                firstMissing = nxFeedTime::GetAsString(between * nxTime::NanosecondsPerDay).substr(0, 8);
        }
        before = date;
    }
    std::string text;
    if (worst != nullptr)
        text = fmt::format("gaps: {} within {} of {} days, the longest of {} up to {}", gaps, days,
                           _days.size(), ShowLength(worst->longest), ShowTime(worst->longestEnd));
    if (missing != 0)
        text += fmt::format("{}weekdays without rows: {}, the first {}", text.empty() ? "" : "; ", missing,
                            firstMissing);
    return text;
}

std::vector<std::string> nxImportedProduct::GetRemarks() const
{
    std::vector<std::string> remarks;
    if (const std::string gaps = _RemarkGaps(); !gaps.empty()) remarks.push_back(gaps);
    const std::pair<const char*, const Note&> notes[] = {
        {"rows that came late, sorted in", _sorted},
        {_file.kind == "bars" ? "rows that came twice, left out" : "rows like the one before, kept", _twice},
        {"prices of 0", _zero},
        {"prices below 0", _negative},
        {"prices more than 20 times the median move off, and back in the next row", _outliers}};
    for (const auto& [what, note] : notes)
        if (note.count != 0)
            remarks.push_back(fmt::format("{}: {}, the first {}", what, note.count, note.first));
    return remarks;
}
