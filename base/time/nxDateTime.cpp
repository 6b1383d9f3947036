#include "base/time/nxDateTime.h"

#include <array>
#include <chrono>
#include <stdexcept>
#include <string_view>

#include "base/time/nxTimeSource.h"

namespace {

using namespace std::chrono;

// The count of seconds of a calendar date, or false when there is no such second in the years 1 to 9999.
bool ToSeconds(int yearNumber, int monthNumber, int dayNumber, int hour, int minute, int second,
               long long& out)
{
    const year_month_day date{year{yearNumber}, month{static_cast<unsigned int>(monthNumber)},
                              day{static_cast<unsigned int>(dayNumber)}};
    const bool inRange = yearNumber >= 1 && yearNumber <= 9999 && monthNumber >= 1 && monthNumber <= 12 &&
                         dayNumber >= 1 && dayNumber <= 31 && date.ok() && hour >= 0 && hour < 24 &&
                         minute >= 0 && minute < 60 && second >= 0 && second < 60;
    if (inRange)
        out = sys_seconds{sys_days{date} + hours{hour} + minutes{minute} + seconds{second}}
                  .time_since_epoch()
                  .count();
    return inRange;
}

constexpr long long FirstSecond = sys_seconds{sys_days{year{1} / 1 / 1}}.time_since_epoch().count();
constexpr long long LastSecond =
    sys_seconds{sys_days{year{9999} / 12 / 31} + days{1}}.time_since_epoch().count() - 1;

struct Calendar
{
    year_month_day date;
    hh_mm_ss<seconds> time;
};

Calendar CalendarOf(long long time)
{
    const sys_seconds moment{seconds{time}};
    const auto midnight = floor<days>(moment);
    return {year_month_day{midnight}, hh_mm_ss{moment - midnight}};
}

// A number of exactly `width` digits at `position`, or -1.
int ReadDigits(std::string_view text, std::size_t position, std::size_t width)
{
    int number = 0;
    for (const char c : text.substr(position, width)) {
        if (c < '0' || c > '9') return -1;
        number = number * 10 + (c - '0');
    }
    return number;
}

void AppendDigits(std::string& text, int number, unsigned int width)
{
    std::array<char, 4> digits;
    for (unsigned int i = width; i-- > 0; number /= 10)
        digits[i] = static_cast<char>('0' + number % 10);
    text.append(digits.data(), width);
}

}  // namespace

nxDateTime::nxDateTime(int year, int month, int day, int hour, int minute, int second,
                       unsigned int /*fraction*/)
{
    if (!ToSeconds(year, month, day, hour, minute, second, _time))
        throw std::invalid_argument("nxDateTime: no such date");
}

bool nxDateTime::IsValid() const
{
    return !IsNull() && !IsNoChange() && _time >= FirstSecond && _time <= LastSecond;
}

int nxDateTime::GetYear() const
{
    return IsValid() ? static_cast<int>(CalendarOf(_time).date.year()) : 0;
}

int nxDateTime::GetMonth() const
{
    return IsValid() ? static_cast<int>(static_cast<unsigned int>(CalendarOf(_time).date.month())) : 0;
}

int nxDateTime::GetDay() const
{
    return IsValid() ? static_cast<int>(static_cast<unsigned int>(CalendarOf(_time).date.day())) : 0;
}

int nxDateTime::GetHour() const
{
    return IsValid() ? static_cast<int>(CalendarOf(_time).time.hours().count()) : 0;
}

int nxDateTime::GetMinute() const
{
    return IsValid() ? static_cast<int>(CalendarOf(_time).time.minutes().count()) : 0;
}

int nxDateTime::GetSecond() const
{
    return IsValid() ? static_cast<int>(CalendarOf(_time).time.seconds().count()) : 0;
}

std::string nxDateTime::GetAsString() const
{
    return GetAsString("%Y%m%d:%H:%M:%S");
}

std::string nxDateTime::GetAsString(const std::string& format) const
{
    std::string text;
    if (!IsValid()) return text;
    const Calendar calendar = CalendarOf(_time);
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char letter = format[i] == '%' && i + 1 < format.size() ? format[i + 1] : '\0';
        ++i;
        switch (letter) {
            case 'Y':
                AppendDigits(text, static_cast<int>(calendar.date.year()), 4);
                break;
            case 'm':
                AppendDigits(text, static_cast<int>(static_cast<unsigned int>(calendar.date.month())), 2);
                break;
            case 'd':
                AppendDigits(text, static_cast<int>(static_cast<unsigned int>(calendar.date.day())), 2);
                break;
            case 'H':
                AppendDigits(text, static_cast<int>(calendar.time.hours().count()), 2);
                break;
            case 'M':
                AppendDigits(text, static_cast<int>(calendar.time.minutes().count()), 2);
                break;
            case 'S':
                AppendDigits(text, static_cast<int>(calendar.time.seconds().count()), 2);
                break;
            case '%':
                text += '%';
                break;
            default:
                text += format[--i];
        }
    }
    return text;
}

nxErrorEnum nxDateTime::SetFromString(const std::string& text, nxDateTime& date)
{
    date.SetNull();
    const bool hasTime = text.size() == 14 || text.size() == 17;
    const bool hasSeconds = text.size() == 17;
    const bool colons = (!hasTime || (text[8] == ':' && text[11] == ':')) && (!hasSeconds || text[14] == ':');
    if ((text.size() != 8 && !hasTime) || !colons) return nxError_InvalidDate;

    nxDateTime read;
    const bool good = ToSeconds(ReadDigits(text, 0, 4), ReadDigits(text, 4, 2), ReadDigits(text, 6, 2),
                                hasTime ? ReadDigits(text, 9, 2) : 0, hasTime ? ReadDigits(text, 12, 2) : 0,
                                hasSeconds ? ReadDigits(text, 15, 2) : 0, read._time);
    if (!good || !read.IsValid()) return nxError_InvalidDate;
    date = read;
    return {};
}

nxDateTime nxDateTime::operator+(const nxDateTimeSpan& span) const
{
    if (IsNull() || IsNoChange()) return *this;
    nxDateTime sum;
    if (__builtin_add_overflow(_time, span.GetTotalSeconds(), &sum._time)) sum.SetNull();
    return sum;
}

nxDateTime nxDateTime::GetCurrentTimeAsGMT()
{
    return nxTimeSource::Now().GetAsDateTime();
}
