#include "host/jobs/nxBarSpan.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "base/time/nxTime.h"

namespace {

constexpr long long Second = nxTime::NanosecondsPerSecond;
constexpr long long Day = nxTime::NanosecondsPerDay;
// What recorded times reach, without the outermost days, whose bars would begin or end beyond.
constexpr long long Earliest = std::numeric_limits<long long>::min() + 2 * Day;
constexpr long long Latest = nxTime::Never - 2 * Day;

// Division towards the past.
long long Divide(long long time, long long length)
{
    const long long quotient = time / length;
    return time % length < 0 ? quotient - 1 : quotient;
}

long long GetDayTime(long long day)
{
    return std::clamp(day, Earliest / Day, Latest / Day) * Day;
}

long long GetTime(long long second)
{
    return std::clamp(second, Earliest / Second, Latest / Second) * Second;
}

long long GetMonthBegin(long long month)
{
    const long long year = Divide(month, 12);
    const std::chrono::year_month_day first{
        std::chrono::year(static_cast<int>(year)),
        std::chrono::month(static_cast<unsigned int>(month - year * 12 + 1)), std::chrono::day(1)};
    return std::chrono::sys_days(first).time_since_epoch().count();
}

long long GetMonth(long long day)
{
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))};
    return static_cast<int>(date.year()) * 12LL + static_cast<unsigned int>(date.month()) - 1;
}

// The days, the last left out, of the bar that holds the day. Weeks begin on Monday, as day 4 was one.
std::pair<long long, long long> GetDays(const nxBarTerms& terms, long long day)
{
    if (terms.unit == nxBarUnit::Month) {
        const long long month = Divide(GetMonth(day), terms.count) * terms.count;
        return {GetMonthBegin(month), GetMonthBegin(month + terms.count)};
    }
    const long long length = terms.unit == nxBarUnit::Week ? 7 * terms.count : terms.count;
    const long long first = terms.unit == nxBarUnit::Week ? 4 : 0;
    const long long begin = Divide(day - first, length) * length + first;
    return {begin, begin + length};
}

}  // namespace

bool nxBarSpan::Find(long long time)
{
    if (time >= _from && time < _until) return true;
    if (time < Earliest || time > Latest) return false;
    if (_terms.unit == nxBarUnit::Multiple) return _FindMultiple(time);
    return _terms.unit == nxBarUnit::Clock || _terms.IsOfDays() ? _FindInSession(time) : _FindSession(time);
}

bool nxBarSpan::_FindMultiple(long long time)
{
    const long long length = _terms.count * Second;
    // Nearly always it is the one after it.
    const long long begin = time >= _end && time - length < _end ? _end : Divide(time, length) * length;
    _SetSpan(begin, begin + length);
    return true;
}

// As long as the market stays open; where it always does, or is not known to close, the UTC day is a session,
// and bars of trades know none.
bool nxBarSpan::_FindSession(long long time)
{
    if (!_hours.IsEmpty()) {
        if (!_hours.IsOpen(time)) return false;
        _SetSpan(_hours.GetLastChange(time), _hours.GetNextChange(time));
        if (_end != nxTime::Never) return true;
    }
    const long long day = Divide(time, Day) * Day;
    _terms.IsMadeOfTrades() ? _SetSpan(Earliest, nxTime::Never) : _SetSpan(day, day + Day);
    return true;
}

bool nxBarSpan::_FindInSession(long long time)
{
    const auto session = _hours.FindSession(time);
    if (!session) return false;
    if (_terms.unit == nxBarUnit::Clock) {
        const long long length = _terms.count * Second;
        const long long begin = session->begin + (time - session->begin) / length * length;
        _SetSpan(begin, std::min(begin + length, session->end));
        return true;
    }
    const nxTradingDays days = _SetDays(session->tradingDay);
    if (!days.span.IsEmpty()) _end = GetTime(days.span.end);
    _from = session->begin;
    _until = session->end;
    return true;
}

nxTradingDays nxBarSpan::_SetDays(long long day)
{
    const auto [first, end] = GetDays(_terms, day);
    _day = day;
    _lastDay = end - 1;
    _SetSpan(GetDayTime(first), GetDayTime(end));
    if (_hours.IsEmpty()) return {};
    const nxTradingCalendar& calendar = _hours.GetCalendar();
    const nxTradingDays days = calendar.GetTradingDays(first, end);
    _end = std::max(_end, calendar.GetUtc(_end / Second) * Second);
    if (days.span.IsEmpty()) return days;
    _lastDay = days.last;
    _begin = GetTime(days.span.begin);
    return days;
}

void nxBarSpan::FindDay(long long moment, long long stamp)
{
    const bool isDate = stamp % Day == 0 || _hours.IsEmpty();
    const long long second = Divide(moment, Second);
    _SetDays(Divide(isDate ? second : _hours.GetCalendar().GetLocal(second), nxTime::SecondsPerDay));
    _from = _until = 0;
}
