#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/feed/nxTimeZone.h"

// How the times of a file that others wrote are read. The forms, each told cell by cell:
//   a number since 1970 as nxFeedTime tells its unit, also with a fraction
//   a number since the midnight of a day that is given, of milliseconds or seconds
//   2024-08-09 2024/8/9 2024.08.09 20240809 09.08.2024 09-Aug-2024 Aug 9, 2024, and 08/09/2024 in the order
//   that the first rows tell; then T, D, a blank or a colon, and
//   12:34 12:34:56 12:34:56.789 1234 123456 123456789 07-AM; then Z, UTC, GMT+0800, +02:00 or nothing
// What names no zone is of the zone that is given, else UTC. Read by one thread at a time; the counts by any.
class nxTimeText
{
public:
    enum class DayUnit : unsigned char { None, Milliseconds, Seconds };

    std::shared_ptr<const nxTimeZone> zone;  // none: UTC
    std::optional<long long> day;            // since 1970, of times of day
    DayUnit dayUnit = DayUnit::None;         // of numbers since its midnight
    std::optional<bool> isDayFirst;          // of 08/09/2024

    // Finds out from the first cells of the column what they leave open. False: `reason` tells what cannot
    // be known and which option tells it.
    [[nodiscard]] bool Learn(std::span<const std::string_view> cells, std::string& reason);

    // Null, or why the text is refused.
    [[nodiscard]] const char* Read(std::string_view text, long long& time);
    // The same for two cells.
    [[nodiscard]] const char* Read(std::string_view date, std::string_view timeOfDay, long long& time);

    [[nodiscard]] static bool IsTimeOfDay(std::string_view text);
    // As a person would write the form of such a cell: "days", "milliseconds since 1970".
    [[nodiscard]] std::string Describe(std::string_view cell) const;

    // Local times that clocks show twice, of which the first was taken unless the rows had come farther, and
    // that they leave out, which were taken as the moment of the change.
    [[nodiscard]] unsigned long long GetTwiceCount() const { return _twice; }
    [[nodiscard]] unsigned long long GetNeverCount() const { return _never; }

    nxTimeText() = default;
    nxTimeText(const nxTimeText& other) { *this = other; }
    nxTimeText& operator=(const nxTimeText& other);

private:
    struct Local;

    const char* _ReadNumber(std::string_view text, long long& time);
    const char* _TakeDate(std::string_view& text, long long& date);
    const char* _ReadDate(std::string_view& text, long long& date) const;
    const char* _ReadNamedMonth(std::string_view& text, long long& date) const;
    const char* _ReadDateAndRest(std::string_view text, Local& local);
    const char* _Join(const Local& local, long long& time);
    long long _GetOffset(long long seconds);

    std::string _dateText;  // the last one that was read, and its day
    long long _date = 0;
    nxTimeZone::Span _span;  // around the last local time
    long long _last = 0;     // the last moment, in seconds
    std::atomic<unsigned long long> _twice = 0, _never = 0;
};
