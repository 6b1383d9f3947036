#include "host/feed/nxTimeText.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "base/time/nxTime.h"
#include "host/feed/nxFeedTime.h"

namespace {

using nxTime::NanosecondsPerSecond;

constexpr const char* NotATime = "not a time";
constexpr const char* NoSuchDate = "no such calendar date";
constexpr const char* NoSuchTimeOfDay = "no such time of day";
constexpr const char* OutOfRange = "time out of range (1678 to 2261)";

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t CountDigits(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
}

// So many digits off the front, fewer where there are no more. -1: none.
int TakeNumber(std::string_view& text, std::size_t most)
{
    const std::size_t count = std::min(CountDigits(text), most);
    if (count == 0) return -1;
    int value = 0;
    for (const char c : text.substr(0, count))
        value = value * 10 + (c - '0');
    text.remove_prefix(count);
    return value;
}

bool Take(std::string_view& text, char wanted)
{
    if (text.empty() || text.front() != wanted) return false;
    text.remove_prefix(1);
    return true;
}

void TakeBlanks(std::string_view& text)
{
    while (Take(text, ' ')) {
    }
}

// Up to nine digits as nanoseconds.
int TakeFraction(std::string_view& text)
{
    int sum = 0, scale = 100'000'000;
    for (; scale > 0 && !text.empty() && IsDigit(text.front()); scale /= 10) {
        sum += (text.front() - '0') * scale;
        text.remove_prefix(1);
    }
    return sum;
}

const char* SetDate(int year, int month, int dayOfMonth, long long& date)
{
    const std::chrono::year_month_day day{std::chrono::year(year),
                                          std::chrono::month(static_cast<unsigned int>(month)),
                                          std::chrono::day(static_cast<unsigned int>(dayOfMonth))};
    if (year < 0 || month < 0 || dayOfMonth < 0 || !day.ok()) return NoSuchDate;
    date = std::chrono::sys_days(day).time_since_epoch().count();
    return nullptr;
}

// From 1; 0: none.
int TakeMonthName(std::string_view& text)
{
    constexpr std::string_view names = "janfebmaraprmayjunjulaugsepoctnovdec";
    std::string name(text.substr(0, 3));
    std::ranges::transform(name, name.begin(), [](char c) { return static_cast<char>(c | 0x20); });
    const std::size_t at = names.find(name);
    if (name.size() < 3 || at == names.npos || at % 3 != 0) return 0;
    text.remove_prefix(3);
    return static_cast<int>(at / 3) + 1;
}

// The nanoseconds of the day, off the front.
const char* TakeTimeOfDay(std::string_view& text, long long& nanoseconds)
{
    // 12:34:56, as nearly all are.
    if (text.size() >= 8 && text[2] == ':' && text[5] == ':' && (text.size() == 8 || text[8] != '.')) {
        const auto two = [text](std::size_t at) {
            return IsDigit(text[at]) && IsDigit(text[at + 1]) ? (text[at] - '0') * 10 + (text[at + 1] - '0')
                                                              : -1;
        };
        const int hour = two(0), minute = two(3), second = two(6);
        if (hour >= 0 && minute >= 0 && second >= 0 && hour <= 23 && minute <= 59 && second <= 59) {
            nanoseconds = ((hour * 60 + minute) * 60LL + second) * NanosecondsPerSecond;
            text.remove_prefix(8);
            return nullptr;
        }
    }
    const std::size_t digits = CountDigits(text);
    int hour = TakeNumber(text, 2), minute = 0, second = 0, fraction = 0;
    if (Take(text, ':')) {
        minute = TakeNumber(text, 2);
        if (Take(text, ':')) {
            second = TakeNumber(text, 2);
            if (Take(text, '.') || Take(text, ',')) fraction = TakeFraction(text);
        }
    } else if (text.starts_with("-AM") || text.starts_with("-PM")) {
        hour = hour % 12 + (text[1] == 'P' ? 12 : 0);
        text.remove_prefix(3);
    } else {
        if (digits != 4 && (digits < 6 || digits > 15)) return NotATime;
        minute = TakeNumber(text, 2);
        if (digits != 4) second = TakeNumber(text, 2);
        if (digits > 6 || Take(text, '.')) fraction = TakeFraction(text);
    }
    if (hour < 0 || minute < 0 || second < 0) return NotATime;
    if (hour > 23 || minute > 59 || second > 59) return NoSuchTimeOfDay;
    nanoseconds = ((hour * 60 + minute) * 60LL + second) * NanosecondsPerSecond + fraction;
    return nullptr;
}

// Seconds that the zone is ahead of UTC; none: the text names no zone. False: it is none.
bool TakeZone(std::string_view& text, std::optional<long long>& offset)
{
    TakeBlanks(text);
    if (text.empty()) return true;
    offset = 0;
    if (Take(text, 'Z')) return true;
    if (text.starts_with("UTC") || text.starts_with("GMT")) text.remove_prefix(3);
    if (text.empty()) return true;
    const bool isBehind = text.front() == '-';
    if (!Take(text, '+') && !Take(text, '-')) return false;
    const int hours = TakeNumber(text, 2);
    Take(text, ':');
    const int minutes = text.empty() ? 0 : TakeNumber(text, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) return false;
    offset = (isBehind ? -60 : 60) * (hours * 60LL + minutes);
    return true;
}

bool IsNumber(std::string_view text)
{
    const std::size_t whole = CountDigits(text);
    return whole != 0 &&
           (whole == text.size() ||
            (text[whole] == '.' && CountDigits(text.substr(whole + 1)) == text.size() - whole - 1));
}

// 8 digits are a date, 14 and more that begin as one are a date and a time.
bool IsDateInDigits(std::string_view text)
{
    const std::size_t digits = CountDigits(text);
    if (digits == 8) return digits == text.size() || text[8] != '.';
    return (digits == 14 || digits == 17) && (text.starts_with("19") || text.starts_with("20")) &&
           text[4] <= '1';
}

}  // namespace

// A date and a time of day as clocks show them, or in a zone of their own.
struct nxTimeText::Local
{
    long long date = 0;         // days since 1970
    long long nanoseconds = 0;  // of the day
    std::optional<long long> offset;
};

nxTimeText& nxTimeText::operator=(const nxTimeText& other)
{
    zone = other.zone;
    day = other.day;
    dayUnit = other.dayUnit;
    isDayFirst = other.isDayFirst;
    _span = {};
    return *this;
}

const char* nxTimeText::Read(std::string_view text, long long& time)
{
    if (IsNumber(text) && (dayUnit != DayUnit::None || !IsDateInDigits(text))) return _ReadNumber(text, time);
    Local local;
    if (day && IsTimeOfDay(text)) {
        local.date = *day;
        if (const char* const reason = TakeTimeOfDay(text, local.nanoseconds)) return reason;
        if (!text.empty()) return NotATime;
    } else if (const char* const reason = _ReadDateAndRest(text, local)) {
        return reason;
    }
    return _Join(local, time);
}

const char* nxTimeText::Read(std::string_view date, std::string_view timeOfDay, long long& time)
{
    Local local;
    if (const char* const reason = _TakeDate(date, local.date)) return reason;
    if (!date.empty()) return NotATime;
    if (const char* const reason = TakeTimeOfDay(timeOfDay, local.nanoseconds)) return reason;
    if (!TakeZone(timeOfDay, local.offset) || !timeOfDay.empty()) return NotATime;
    return _Join(local, time);
}

const char* nxTimeText::_ReadNumber(std::string_view text, long long& time)
{
    std::string_view rest = text;
    const std::size_t whole = CountDigits(rest);
    unsigned long long count = 0;
    for (const char c : rest.substr(0, whole))
        if (__builtin_mul_overflow(count, 10ULL, &count) ||
            __builtin_add_overflow(count, static_cast<unsigned long long>(c - '0'), &count))
            return OutOfRange;
    rest.remove_prefix(whole);
    Take(rest, '.');
    const int fraction = TakeFraction(rest);
    if (dayUnit != DayUnit::None) {
        const bool isOfSeconds = dayUnit == DayUnit::Seconds;
        if (!day) return "a time of day, and its day is not known; --date YYYY-MM-DD tells it";
        if (count >= (isOfSeconds ? 1 : 1000) * static_cast<unsigned long long>(nxTime::SecondsPerDay))
            return NoSuchTimeOfDay;
        const long long unit = isOfSeconds ? NanosecondsPerSecond : nxTime::NanosecondsPerMillisecond;
        Local local{
            *day, static_cast<long long>(count) * unit + fraction / (NanosecondsPerSecond / unit), {}};
        return _Join(local, time);
    }
    if (const char* const reason = nxFeedTime::SetFromInteger(count, time)) return reason;
    // The fraction is one of the unit, which the size of the whole told.
    const long long unit = count == 0 ? NanosecondsPerSecond : time / static_cast<long long>(count);
    time += fraction / (NanosecondsPerSecond / unit);
    return nullptr;
}

const char* nxTimeText::_ReadDate(std::string_view& text, long long& date) const
{
    const std::size_t digits = CountDigits(text);
    if (digits == 0 || (digits <= 2 && text.size() > digits + 1 && !IsDigit(text[digits + 1])))
        return _ReadNamedMonth(text, date);
    if (digits >= 8) {
        const int year = TakeNumber(text, 4), month = TakeNumber(text, 2);
        return SetDate(year, month, TakeNumber(text, 2), date);
    }
    if (digits != 4 && digits > 2) return NotATime;
    const int first = TakeNumber(text, 4);
    const char mark = text.empty() ? '\0' : text.front();
    if ((mark != '-' && mark != '/' && mark != '.') || !Take(text, mark)) return NotATime;
    const int second = TakeNumber(text, 2);
    if (!Take(text, mark)) return NotATime;
    const int third = TakeNumber(text, 4);
    if (second < 0 || third < 0) return NotATime;
    if (digits == 4) return SetDate(first, second, third, date);
    return mark == '.' || isDayFirst.value_or(false) ? SetDate(third, second, first, date)
                                                     : SetDate(third, first, second, date);
}

// 09-Aug-2024 or Aug 9, 2024.
const char* nxTimeText::_ReadNamedMonth(std::string_view& text, long long& date) const
{
    int dayOfMonth = TakeNumber(text, 2);
    const bool isDayInFront = dayOfMonth >= 0;
    if (isDayInFront && !Take(text, '-') && !Take(text, ' ')) return NotATime;
    const int month = TakeMonthName(text);
    if (month == 0) return NotATime;
    if (isDayInFront) {
        if (!Take(text, '-') && !Take(text, ' ')) return NotATime;
    } else {
        TakeBlanks(text);
        dayOfMonth = TakeNumber(text, 2);
        Take(text, ',');
        TakeBlanks(text);
    }
    return SetDate(TakeNumber(text, 4), month, dayOfMonth, date);
}

// Mostly the day of the row before.
const char* nxTimeText::_TakeDate(std::string_view& text, long long& date)
{
    const std::size_t size = _dateText.size();
    if (size != 0 && text.starts_with(_dateText) && (text.size() == size || !IsDigit(text[size]))) {
        date = _date;
        text.remove_prefix(size);
        return nullptr;
    }
    const std::string_view whole = text;
    if (const char* const reason = _ReadDate(text, date)) return reason;
    _dateText = whole.substr(0, whole.size() - text.size());
    _date = date;
    return nullptr;
}

const char* nxTimeText::_ReadDateAndRest(std::string_view text, Local& local)
{
    if (const char* const reason = _TakeDate(text, local.date)) return reason;
    // NinjaTrader writes its fraction as a word of its own: 050100 0120000.
    if (text.empty()) return nullptr;
    if (!IsDigit(text.front())) {
        if (std::string_view("TD :,;\t").find(text.front()) == std::string_view::npos) return NotATime;
        text.remove_prefix(1);
        TakeBlanks(text);
    }
    if (const char* const reason = TakeTimeOfDay(text, local.nanoseconds)) return reason;
    if (text.size() == 8 && text.front() == ' ' && CountDigits(text.substr(1)) == 7) {
        text.remove_prefix(1);
        local.nanoseconds += TakeFraction(text);
    }
    return TakeZone(text, local.offset) && text.empty() ? nullptr : NotATime;
}

const char* nxTimeText::_Join(const Local& local, long long& time)
{
    long long seconds = local.date * nxTime::SecondsPerDay + local.nanoseconds / NanosecondsPerSecond;
    if (local.offset)
        seconds -= *local.offset;
    else if (zone)
        seconds -= _GetOffset(seconds);
    _last = seconds;
    long long sum = 0;
    if (__builtin_mul_overflow(seconds, NanosecondsPerSecond, &sum) ||
        __builtin_add_overflow(sum, local.nanoseconds % NanosecondsPerSecond, &sum) ||
        sum < nxFeedTime::Earliest || sum > nxFeedTime::Latest)
        return OutOfRange;
    time = sum;
    return nullptr;
}

long long nxTimeText::_GetOffset(long long seconds)
{
    if (seconds >= _span.begin && seconds < _span.end) [[likely]]
        return _span.offset;
    _span = zone->GetSpan(seconds);
    if (_span.begin != _span.end) return _span.offset;
    ++(_span.isTwice ? _twice : _never);
    // A file goes on in time, so what would be earlier than the row before is the second of the two.
    if (_span.isTwice && seconds - _span.offset < _last) return _span.secondOffset;
    return _span.offset;
}

bool nxTimeText::IsTimeOfDay(std::string_view text)
{
    long long ignored = 0;
    const std::size_t digits = CountDigits(text);
    // Numbers since 1970 have 10 digits, 13, 16 or 19.
    return (digits <= 2 || digits == 4 || digits % 3 == 0) && digits != 0 &&
           TakeTimeOfDay(text, ignored) == nullptr && text.empty();
}

bool nxTimeText::Learn(std::span<const std::string_view> cells, std::string& reason)
{
    if (isDayFirst) return true;
    bool isOpen = false;
    for (std::string_view cell : cells) {
        const int first = CountDigits(cell) <= 2 ? TakeNumber(cell, 2) : -1;
        if (first < 0 || cell.empty() || (cell.front() != '/' && cell.front() != '-')) continue;
        cell.remove_prefix(1);
        const int second = TakeNumber(cell, 2);
        if (second < 0) continue;
        isOpen = true;
        if (first <= 12 && second <= 12) continue;
        isDayFirst = first > 12;
        return true;
    }
    if (isOpen)
        reason =
            "the first rows do not tell whether the day or the month stands in front; --date-order dmy "
            "or mdy tells it";
    return !isOpen;
}

std::string nxTimeText::Describe(std::string_view cell) const
{
    const std::string where = zone ? " in " + zone->GetName() : "";
    if (!IsNumber(cell) || IsDateInDigits(cell)) {
        const bool hasDayOnly = CountDigits(cell) != 0 && cell.find(':') == cell.npos && cell.size() <= 12;
        return (hasDayOnly ? "days" : "dates and times") + where;
    }
    if (dayUnit == DayUnit::Milliseconds) return "milliseconds of the day" + where;
    if (dayUnit == DayUnit::Seconds) return "seconds of the day" + where;
    constexpr std::array units = {std::pair{11, "seconds"}, std::pair{14, "milliseconds"},
                                  std::pair{17, "microseconds"}};
    const auto digits = static_cast<int>(CountDigits(cell));
    for (const auto& [most, name] : units)
        if (digits <= most) return std::string(name) + " since 1970";
    return "nanoseconds since 1970";
}
