#include "host/market/nxTradingCalendar.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/time/nxTime.h"

namespace {

constexpr long long Day = nxTime::SecondsPerDay;
constexpr long long Week = 7 * Day;
constexpr long long NoTrading = -Day;  // a close before any session of the day begins
constexpr std::array<std::string_view, 7> DayNames{"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};

std::string_view Trim(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

std::size_t FindDay(std::string_view name)
{
    return static_cast<std::size_t>(std::ranges::find(DayNames, name) - DayNames.begin());
}

// `Mon` or `Mon-Fri`, which may lead over the end of the week.
bool ReadDays(std::string_view text, std::array<bool, 7>& days)
{
    const std::size_t dash = text.find('-');
    const std::size_t first = FindDay(text.substr(0, dash));
    const std::size_t last = dash == text.npos ? first : FindDay(text.substr(dash + 1));
    if (first == days.size() || last == days.size()) return false;
    days.fill(false);
    for (std::size_t day = first;; day = (day + 1) % days.size()) {
        days[day] = true;
        if (day == last) return true;
    }
}

// Sessions joined by commas are read one by one.
const char* ReadSessions(std::string_view text, std::vector<nxTradingSession>& sessions)
{
    std::array<bool, 7> days;
    days.fill(true);
    if (const std::size_t blank = text.find(' '); blank != text.npos) {
        if (!ReadDays(text.substr(0, blank), days))
            return "days are Mon, Tue, Wed, Thu, Fri, Sat, Sun, or two joined by -";
        text = Trim(text.substr(blank));
    }
    const std::size_t dash = text.find('-');
    if (dash == text.npos) return "a session is HH:MM-HH:MM";
    const long long begin = nxTradingCalendar::ReadTimeOfDay(text.substr(0, dash));
    long long end = nxTradingCalendar::ReadTimeOfDay(text.substr(dash + 1));
    if (begin < 0 || begin == Day || end < 0) return "a session is HH:MM-HH:MM, from 00:00 to 24:00";
    if (end <= begin) end += Day;
    for (std::size_t day = 0; day < days.size(); ++day) {
        const long long start = static_cast<long long>(day) * Day;
        if (days[day]) sessions.push_back({start + begin, start + end});
    }
    return nullptr;
}

long long Floor(long long value, long long divisor)
{
    const long long quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

long long GetDay(const nxTradingSession& session)
{
    return Floor(session.end - 1, Day);
}

std::string GetTimeOfDay(long long seconds)
{
    return fmt::format("{:02}:{:02}", seconds / 3600, seconds / 60 % 60);
}

}  // namespace

long long nxTradingCalendar::ReadTimeOfDay(std::string_view text)
{
    const auto digit = [&](std::size_t place) { return text[place] - '0'; };
    if (text.size() != 5 || text[2] != ':') return -1;
    for (const std::size_t place : {0u, 1u, 3u, 4u})
        if (digit(place) < 0 || digit(place) > 9) return -1;
    const long long hour = digit(0) * 10 + digit(1);
    const long long minute = digit(3) * 10 + digit(4);
    const long long seconds = hour * 3600 + minute * 60;
    return minute < 60 && seconds <= Day ? seconds : -1;
}

const char* nxTradingCalendar::SetFromText(std::string_view text, nxTradingCalendar& calendar)
{
    std::vector<nxTradingSession> sessions;
    for (bool more = true; more;) {
        const std::size_t comma = text.find(',');
        more = comma != text.npos;
        if (const char* reason = ReadSessions(Trim(text.substr(0, comma)), sessions)) return reason;
        if (more) text.remove_prefix(comma + 1);
    }
    std::ranges::sort(sessions, {}, &nxTradingSession::begin);
    for (std::size_t i = 0; i < sessions.size(); ++i) {
        const bool isLast = i + 1 == sessions.size();
        if (sessions[i].end > (isLast ? sessions[0].begin + Week : sessions[i + 1].begin))
            return "two sessions overlap; one may begin only when the other has ended";
    }
    calendar._sessions = std::move(sessions);
    return nullptr;
}

std::string nxTradingCalendar::_AddSpecialDay(long long day, long long close)
{
    const auto place = std::ranges::lower_bound(_specialDays, day, {}, &SpecialDay::day);
    if (place != _specialDays.end() && place->day == day)
        return place->close == NoTrading ? "the day is a holiday already" : "the day is a short one already";
    _specialDays.insert(place, {day, close});
    return {};
}

std::string nxTradingCalendar::AddHoliday(long long day)
{
    return _AddSpecialDay(day, NoTrading);
}

std::string nxTradingCalendar::AddShortDay(long long day, long long close)
{
    long long opening = Day;
    long long closing = NoTrading;
    for (const nxTradingSession& session : _sessions) {
        const long long midnight = GetDay(session) * Day;
        if (Floor(GetDay(session) - day, 7) * 7 != GetDay(session) - day) continue;
        opening = std::min(opening, session.begin - midnight);
        closing = std::max(closing, session.end - midnight);
    }
    if (closing == NoTrading) return "the day has no session that could be shortened";
    if (close <= opening) return "the session begins at " + GetTimeOfDay(opening) + " only";
    if (close >= closing) return "the day's trading ends at " + GetTimeOfDay(closing) + " anyway";
    return _AddSpecialDay(day, close);
}

nxTradingSession nxTradingCalendar::_GetWeekly(long long number) const
{
    const long long week = Floor(number, _GetCount());
    const nxTradingSession& session = _sessions[static_cast<std::size_t>(number - week * _GetCount())];
    return {session.begin + week * Week, session.end + week * Week};
}

long long nxTradingCalendar::GetTradingDay(long long number) const
{
    return GetDay(_GetWeekly(number));
}

nxTradingDays nxTradingCalendar::GetTradingDays(long long first, long long end) const
{
    nxTradingDays days;
    long long number = FindNumber(GetUtc(first * Day));
    while (GetTradingDay(number) < first)
        ++number;
    for (; GetTradingDay(number) < end; ++number) {
        const nxTradingSession session = GetSession(number);
        if (session.IsEmpty()) continue;
        if (days.span.IsEmpty()) days.span.begin = session.begin;
        days.span.end = session.end;
        days.last = GetTradingDay(number);
    }
    return days;
}

nxTradingSession nxTradingCalendar::_GetLocal(long long number) const
{
    nxTradingSession session = _GetWeekly(number);
    if (_specialDays.empty()) return session;
    const long long day = GetDay(session);
    const auto special = std::ranges::lower_bound(_specialDays, day, {}, &SpecialDay::day);
    if (special != _specialDays.end() && special->day == day)
        session.end = std::min(session.end, day * Day + special->close);
    return session;
}

long long nxTradingCalendar::FindNumber(long long utc) const
{
    const long long local = GetLocal(utc);
    const long long week = Floor(local, Week);
    const auto later = std::ranges::upper_bound(_sessions, local - week * Week, {}, &nxTradingSession::begin);
    return week * _GetCount() + (later - _sessions.begin()) - 1;
}

nxTradingSession nxTradingCalendar::GetSession(long long number) const
{
    const nxTradingSession local = _GetLocal(number);
    if (local.IsEmpty()) return local;
    return {GetUtc(local.begin), GetUtc(local.end)};
}

bool nxTradingCalendar::GoesOn(long long number) const
{
    const nxTradingSession session = _GetLocal(number);
    if (session.end % Day != 0 || session.IsEmpty()) return false;
    const nxTradingSession next = _GetLocal(number + 1);
    return next.begin == session.end && !next.IsEmpty();
}

bool nxTradingCalendar::NeverCloses() const
{
    if (IsEmpty() || !_specialDays.empty()) return false;
    for (long long number = 0; number < _GetCount(); ++number)
        if (!GoesOn(number)) return false;
    return true;
}

// Two weeks more than needed: at the end of one, clocks may leave a session out.
long long nxTradingCalendar::GetLastSpecial(long long number) const
{
    if (!_specialDays.empty()) number = std::max(number, Floor(_specialDays.back().day + 7, 7) * _GetCount());
    return number + 2 * _GetCount();
}

long long nxTradingCalendar::GetFirstSpecial(long long number) const
{
    if (!_specialDays.empty())
        number = std::min(number, Floor(_specialDays.front().day - 7, 7) * _GetCount());
    return number - 2 * _GetCount();
}

bool nxTradingCalendar::operator==(const nxTradingCalendar& other) const
{
    const auto name = [](const nxTradingCalendar& calendar) {
        return calendar._zone == nullptr ? std::string() : calendar._zone->GetName();
    };
    return _sessions == other._sessions && _specialDays == other._specialDays && name(*this) == name(other);
}
