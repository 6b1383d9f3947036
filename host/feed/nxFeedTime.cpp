#include "host/feed/nxFeedTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <utility>

#include "base/time/nxTime.h"

namespace {

constexpr const char* NotATime = "not a time";
constexpr const char* NoSuchDate = "no such calendar date";
constexpr const char* NoSuchTimeOfDay = "no such time of day";
constexpr const char* OutOfRange = "time out of range (1678 to 2261)";

// Smaller numbers are of another unit.
constexpr unsigned long long LeastNanoseconds = 100'000'000'000'000'000;

using nxTime::NanosecondsPerSecond;

// Takes a text apart from the front; every step tells whether it found what it looked for.
class Cursor
{
public:
    explicit Cursor(std::string_view text) : _rest(text) {}

    [[nodiscard]] bool IsAtEnd() const { return _rest.empty(); }

    bool Accept(char wanted)
    {
        if (_rest.empty() || _rest.front() != wanted) return false;
        _rest.remove_prefix(1);
        return true;
    }

    bool Digits(std::size_t count, int& value)
    {
        if (_rest.size() < count) return false;
        int sum = 0;
        for (const char c : _rest.substr(0, count)) {
            if (c < '0' || c > '9') return false;
            sum = sum * 10 + (c - '0');
        }
        _rest.remove_prefix(count);
        value = sum;
        return true;
    }

    // 1 to 9 digits behind the point, as nanoseconds.
    bool Fraction(int& nanoseconds)
    {
        int digit = 0;
        int scale = static_cast<int>(NanosecondsPerSecond);
        int sum = 0;
        while (scale > 1 && Digits(1, digit)) {
            scale /= 10;
            sum += digit * scale;
        }
        nanoseconds = sum;
        return scale < NanosecondsPerSecond;
    }

private:
    std::string_view _rest;
};

struct CivilTime
{
    int year = 0, month = 0, day = 0;
    int hour = 0, minute = 0, second = 0;
    int nanosecond = 0;
    int offset = 0;  // minutes ahead of UTC

    [[nodiscard]] std::chrono::year_month_day GetDate() const
    {
        return std::chrono::year(year) / std::chrono::month(static_cast<unsigned int>(month)) /
               std::chrono::day(static_cast<unsigned int>(day));
    }

    const char* Store(long long& time) const
    {
        if (!GetDate().ok()) return NoSuchDate;
        if (hour > 23 || minute > 59 || second > 59) return NoSuchTimeOfDay;
        const long long days = std::chrono::sys_days(GetDate()).time_since_epoch().count();
        const long long seconds = ((days * 24 + hour) * 60 + minute - offset) * 60 + second;
        long long sum = 0;
        if (__builtin_mul_overflow(seconds, NanosecondsPerSecond, &sum) ||
            __builtin_add_overflow(sum, nanosecond, &sum) || sum < nxFeedTime::Earliest ||
            sum > nxFeedTime::Latest)
            return OutOfRange;
        time = sum;
        return nullptr;
    }
};

// HH:MM, with the seconds and their fraction if there are any.
bool ReadTimeOfDay(Cursor& cursor, CivilTime& civil)
{
    if (!cursor.Digits(2, civil.hour) || !cursor.Accept(':') || !cursor.Digits(2, civil.minute)) return false;
    if (!cursor.Accept(':')) return true;
    if (!cursor.Digits(2, civil.second)) return false;
    return !cursor.Accept('.') || cursor.Fraction(civil.nanosecond);
}

bool ReadZone(Cursor& cursor, CivilTime& civil)
{
    if (cursor.IsAtEnd() || cursor.Accept('Z')) return true;
    const bool behind = cursor.Accept('-');
    int hours = 0;
    int minutes = 0;
    if ((!behind && !cursor.Accept('+')) || !cursor.Digits(2, hours)) return false;
    if ((cursor.Accept(':') || !cursor.IsAtEnd()) && !cursor.Digits(2, minutes)) return false;
    if (hours > 23 || minutes > 59) return false;
    civil.offset = (behind ? -1 : 1) * (hours * 60 + minutes);
    return true;
}

}  // namespace

const char* nxFeedTime::SetFromText(std::string_view text, long long& time)
{
    CivilTime civil;
    Cursor cursor(text);
    if (text.size() > 4 && text[4] == '-') {
        const bool read = cursor.Digits(4, civil.year) && cursor.Accept('-') &&
                          cursor.Digits(2, civil.month) && cursor.Accept('-') &&
                          cursor.Digits(2, civil.day) &&
                          (cursor.IsAtEnd() || ((cursor.Accept('T') || cursor.Accept(' ')) &&
                                                ReadTimeOfDay(cursor, civil) && ReadZone(cursor, civil)));
        return read && cursor.IsAtEnd() ? civil.Store(time) : NotATime;
    }
    const bool isDate =
        cursor.Digits(4, civil.year) && cursor.Digits(2, civil.month) && cursor.Digits(2, civil.day);
    if (isDate && cursor.Accept(':'))
        return ReadTimeOfDay(cursor, civil) && cursor.IsAtEnd() ? civil.Store(time) : NotATime;
    // Eight digits are meant as a date, also where there is no such one.
    if (isDate && cursor.IsAtEnd() && civil.year >= 1000) return civil.Store(time);

    unsigned long long count = 0;
    if (text.empty()) return NotATime;
    for (const char c : text) {
        if (c < '0' || c > '9') return NotATime;
        const auto digit = static_cast<unsigned long long>(c - '0');
        if (__builtin_mul_overflow(count, 10ULL, &count) || __builtin_add_overflow(count, digit, &count))
            return OutOfRange;
    }
    return SetFromInteger(count, time);
}

const char* nxFeedTime::SetFromInteger(unsigned long long count, long long& time)
{
    unsigned long long unit = 1;
    if (count < 100'000'000'000)
        unit = nxTime::NanosecondsPerSecond;
    else if (count < 100'000'000'000'000)
        unit = 1'000'000;
    else if (count < LeastNanoseconds)
        unit = 1'000;
    long long product = 0;
    if (__builtin_mul_overflow(count, unit, &product) || product > Latest) return OutOfRange;
    time = product;
    return nullptr;
}

bool nxFeedTime::SetPeriodFromText(std::string_view text, long long& period)
{
    constexpr std::pair<char, long long> units[] = {
        {'s', 1}, {'m', 60}, {'h', 3600}, {'d', nxTime::SecondsPerDay}};
    constexpr long long longest = 366 * nxTime::SecondsPerDay;
    long long count = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc() || rest + 1 != end) return false;
    const auto unit = std::ranges::find(units, *rest, &std::pair<char, long long>::first);
    if (unit == std::end(units) || count <= 0 || count > longest / unit->second) return false;
    period = count * unit->second * NanosecondsPerSecond;
    return true;
}

long long nxFeedTime::GetNextMidnight(long long time)
{
    constexpr long long day = nxTime::NanosecondsPerDay;
    const long long into = time % day;
    return time - into + (into < 0 ? 0 : day);
}

long long nxFeedTime::GetDay(long long time)
{
    return GetNextMidnight(time) / nxTime::NanosecondsPerDay - 1;
}

std::string nxFeedTime::GetDateAsString(long long day)
{
    return GetAsString(day * nxTime::NanosecondsPerDay).substr(0, std::string_view("YYYYMMDD").size());
}

std::string nxFeedTime::GetAsString(long long time)
{
    const std::chrono::sys_time<std::chrono::nanoseconds> point{std::chrono::nanoseconds(time)};
    const auto day = std::chrono::floor<std::chrono::days>(point);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(point - day);
    return fmt::format("{:04}{:02}{:02}:{:02}:{:02}:{:02}.{:09}", static_cast<int>(date.year()),
                       static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                       clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                       clock.subseconds().count());
}

std::string nxFeedTime::GetAsFileText(long long time)
{
    return time < static_cast<long long>(LeastNanoseconds) ? GetAsString(time) : std::to_string(time);
}
