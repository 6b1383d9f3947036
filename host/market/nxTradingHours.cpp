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

nxTradingHours::nxTradingHours(nxTradingCalendar calendar) : _neverCloses(calendar.NeverCloses())
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
    const auto found = _FindSession(second);
    return found && found->session.begin <= second;
}

long long nxTradingHours::GetNextChange(long long time) const
{
    return GetTime(_FindNextChange(GetSecond(time)), nxTime::Never);
}

long long nxTradingHours::GetLastChange(long long time) const
{
    return GetTime(_FindLastChange(GetSecond(time)), std::numeric_limits<long long>::min());
}

std::optional<nxOpenSession> nxTradingHours::FindSession(long long time) const
{
    const long long second = GetSecond(time);
    if (IsEmpty()) {
        const long long day =
            (second < 0 ? second + 1 - nxTime::SecondsPerDay : second) / nxTime::SecondsPerDay;
        return nxOpenSession{day * nxTime::NanosecondsPerDay, (day + 1) * nxTime::NanosecondsPerDay, day};
    }
    const auto found = _FindSession(second);
    if (!found || found->session.begin > second) return std::nullopt;
    return nxOpenSession{GetTime(found->session.begin, std::numeric_limits<long long>::min()),
                         GetTime(found->session.end, nxTime::Never), _calendar->GetTradingDay(found->number)};
}

std::optional<nxTradingHours::Place> nxTradingHours::_FindSession(long long second) const
{
    if (IsEmpty()) return std::nullopt;
    const long long first = _calendar->FindNumber(second);
    const long long last = _calendar->GetLastSpecial(first);
    for (long long number = first; number <= last; ++number) {
        const nxTradingSession session = _calendar->GetSession(number);
        if (!session.IsEmpty() && session.end > second) return Place{number, session};
    }
    return std::nullopt;
}

std::optional<long long> nxTradingHours::_FindNextChange(long long second) const
{
    if (_neverCloses) return std::nullopt;
    const auto found = _FindSession(second);
    if (!found) return std::nullopt;
    if (found->session.begin > second) return found->session.begin;
    if (!_calendar->GoesOn(found->number)) return found->session.end;
    const long long last = _calendar->GetLastSpecial(found->number);
    for (long long number = found->number + 1; number <= last; ++number)
        if (!_calendar->GoesOn(number)) return _calendar->GetSession(number).end;
    return std::nullopt;
}

std::optional<long long> nxTradingHours::_FindLastChange(long long second) const
{
    if (_neverCloses) return std::nullopt;
    const auto found = _FindSession(second);
    if (!found) return std::nullopt;
    const long long first = _calendar->GetFirstSpecial(found->number);
    const bool isOpen = found->session.begin <= second;
    for (long long number = found->number - 1; number >= first; --number) {
        if (isOpen && !_calendar->GoesOn(number)) return _calendar->GetSession(number + 1).begin;
        const nxTradingSession session = _calendar->GetSession(number);
        if (!isOpen && !session.IsEmpty()) return session.end;
    }
    return std::nullopt;
}

bool nxTradingHours::operator==(const nxTradingHours& other) const
{
    return _calendar == other._calendar || (!IsEmpty() && !other.IsEmpty() && *_calendar == *other._calendar);
}
