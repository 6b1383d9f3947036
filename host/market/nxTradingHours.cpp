#include "host/market/nxTradingHours.h"

#include <limits>

#include "base/time/nxTime.h"

namespace {

// Towards the past.
long long GetSecond(long long time)
{
    const long long second = time / nxTime::NanosecondsPerSecond;
    return time % nxTime::NanosecondsPerSecond < 0 ? second - 1 : second;
}

long long GetTime(const std::optional<long long>& second, long long never)
{
    long long time = 0;
    if (!second || __builtin_mul_overflow(*second, nxTime::NanosecondsPerSecond, &time)) return never;
    return time;
}

}  // namespace

nxTradingHours::nxTradingHours(nxTradingCalendar calendar)
{
    if (!calendar.IsEmpty()) _calendar = std::make_shared<const nxTradingCalendar>(std::move(calendar));
}

const char* nxTradingHours::SetFromText(std::string_view text, nxTradingHours& hours)
{
    nxTradingCalendar calendar;
    if (const char* reason = nxTradingCalendar::SetFromText(text, calendar)) return reason;
    hours = nxTradingHours(std::move(calendar));
    return nullptr;
}

bool nxTradingHours::IsOpen(long long time) const
{
    const long long second = GetSecond(time);
    const auto number = _FindSession(second);
    return number && _calendar->GetSession(*number).begin <= second;
}

long long nxTradingHours::GetNextChange(long long time) const
{
    return GetTime(_FindNextChange(GetSecond(time)), nxTime::Never);
}

long long nxTradingHours::GetLastChange(long long time) const
{
    return GetTime(_FindLastChange(GetSecond(time)), std::numeric_limits<long long>::min());
}

std::optional<long long> nxTradingHours::_FindSession(long long second) const
{
    if (IsEmpty()) return std::nullopt;
    const long long first = _calendar->FindNumber(second);
    const long long last = _calendar->GetLastSpecial(first);
    for (long long number = first; number <= last; ++number) {
        const nxTradingSession session = _calendar->GetSession(number);
        if (!session.IsEmpty() && session.end > second) return number;
    }
    return std::nullopt;
}

std::optional<long long> nxTradingHours::_FindNextChange(long long second) const
{
    const auto number = _FindSession(second);
    if (!number) return std::nullopt;
    const long long begin = _calendar->GetSession(*number).begin;
    if (begin > second) return begin;
    const long long last = _calendar->GetLastSpecial(*number);
    for (long long ending = *number; ending <= last; ++ending)
        if (!_calendar->GoesOn(ending)) return _calendar->GetSession(ending).end;
    return std::nullopt;
}

std::optional<long long> nxTradingHours::_FindLastChange(long long second) const
{
    const auto number = _FindSession(second);
    if (!number) return std::nullopt;
    const long long first = _calendar->GetFirstSpecial(*number);
    const bool isOpen = _calendar->GetSession(*number).begin <= second;
    for (long long earlier = *number - 1; earlier >= first; --earlier) {
        if (isOpen && !_calendar->GoesOn(earlier)) return _calendar->GetSession(earlier + 1).begin;
        const nxTradingSession session = _calendar->GetSession(earlier);
        if (!isOpen && !session.IsEmpty()) return session.end;
    }
    return std::nullopt;
}

bool nxTradingHours::operator==(const nxTradingHours& other) const
{
    return _calendar == other._calendar || (!IsEmpty() && !other.IsEmpty() && *_calendar == *other._calendar);
}
