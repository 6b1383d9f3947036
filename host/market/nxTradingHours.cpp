#include "host/market/nxTradingHours.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr long long NanosecondsPerSecond = 1'000'000'000;
constexpr long long Day = 86'400;
constexpr long long Week = 7 * Day;
constexpr std::array<std::string_view, 7> DayNames{"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};

std::string_view Trim(std::string_view text)
{
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

// HH:MM as seconds, up to 24:00; below 0 where it is none.
long long ReadTimeOfDay(std::string_view text)
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

// The remainder that is never negative.
long long Modulo(long long value, long long divisor)
{
    const long long rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

}  // namespace

const char* nxTradingHours::SetFromText(std::string_view text, nxTradingHours& hours)
{
    nxTradingHours read;
    std::string_view rest = text;
    for (bool more = true; more;) {
        const std::size_t comma = rest.find(',');
        more = comma != rest.npos;
        std::string_view session = Trim(rest.substr(0, comma));
        if (more) rest.remove_prefix(comma + 1);

        std::array<bool, 7> days;
        days.fill(true);
        if (const std::size_t blank = session.find(' '); blank != session.npos) {
            if (!ReadDays(session.substr(0, blank), days))
                return "days are Mon, Tue, Wed, Thu, Fri, Sat, Sun, or two joined by -";
            session = Trim(session.substr(blank));
        }
        const std::size_t dash = session.find('-');
        if (dash == session.npos) return "a session is HH:MM-HH:MM";
        const long long begin = ReadTimeOfDay(session.substr(0, dash));
        long long end = ReadTimeOfDay(session.substr(dash + 1));
        if (begin < 0 || begin == Day || end < 0) return "a session is HH:MM-HH:MM, from 00:00 to 24:00";
        if (end <= begin) end += Day;
        for (std::size_t day = 0; day < days.size(); ++day) {
            const long long start = static_cast<long long>(day) * Day;
            if (days[day]) read._sessions.push_back({start + begin, start + end});
        }
    }

    std::vector<Session>& sessions = read._sessions;
    std::ranges::sort(sessions, {}, &Session::begin);
    std::vector<Session> joined;
    for (const Session& session : sessions) {
        if (!joined.empty() && session.begin <= joined.back().end) {
            joined.back().end = std::max(joined.back().end, session.end);
        } else {
            joined.push_back(session);
        }
    }
    // The last one may reach into the next week, over the first ones.
    while (joined.size() > 1 && joined.front().begin + Week <= joined.back().end) {
        joined.back().end = std::max(joined.back().end, joined.front().end + Week);
        joined.erase(joined.begin());
    }
    sessions = std::move(joined);
    if (sessions.size() == 1 && sessions[0].end - sessions[0].begin >= Week) sessions[0] = {0, Week};
    hours = std::move(read);
    return nullptr;
}

bool nxTradingHours::IsOpen(long long time) const
{
    const long long second = Modulo((time - Modulo(time, NanosecondsPerSecond)) / NanosecondsPerSecond, Week);
    return std::ranges::any_of(_sessions, [second](const Session& session) {
        return (session.begin <= second && second < session.end) || second + Week < session.end;
    });
}

long long nxTradingHours::GetLastChange(long long time) const
{
    constexpr long long never = std::numeric_limits<long long>::min();
    if (GetNextChange(time) == std::numeric_limits<long long>::max()) return never;
    const long long floor = (time - Modulo(time, NanosecondsPerSecond)) / NanosecondsPerSecond;
    const long long second = Modulo(floor, Week);
    long long behind = Week;
    for (const Session& session : _sessions)
        for (const long long edge : {session.begin, session.end})
            behind = std::min(behind, Modulo(second - edge, Week));
    long long change = 0;
    return __builtin_mul_overflow(floor - behind, NanosecondsPerSecond, &change) ? never : change;
}

long long nxTradingHours::GetNextChange(long long time) const
{
    constexpr long long never = std::numeric_limits<long long>::max();
    if (_sessions.empty() || _sessions.front().end - _sessions.front().begin >= Week) return never;
    const long long floor = (time - Modulo(time, NanosecondsPerSecond)) / NanosecondsPerSecond;
    const long long second = Modulo(floor, Week);
    long long ahead = Week;
    for (const Session& session : _sessions)
        for (const long long edge : {session.begin, session.end})
            if (const long long wait = Modulo(edge - second, Week); wait != 0) ahead = std::min(ahead, wait);
    long long change = 0;
    return __builtin_mul_overflow(floor + ahead, NanosecondsPerSecond, &change) ? never : change;
}
