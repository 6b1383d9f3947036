#pragma once

#include <string>
#include <string_view>

// The times of recorded data: nanoseconds since 1970-01-01 UTC. Static functions only; any thread.
class nxFeedTime
{
public:
    // What 64 bits hold reaches from September 1677 to April 2262. Only whole years of it are times of data,
    // so that a day or a week more or less is still a time.
    static constexpr long long Earliest = -9'214'560'000'000'000'000;  // 1678-01-01
    static constexpr long long Latest = 9'214'646'399'999'999'999;     // the last one of 2261

    // Reads the whole text, in one of the forms
    //   20240808, 20240808:12:34, 20240808:12:34:56, 20240808:12:34:56.123456789
    //   2024-08-08, 2024-08-08T12:34, 2024-08-08T12:34:56.789Z, 2024-08-08 12:34:56+02:00
    //   an integer since 1970
    // A fraction has 1 to 9 digits; without a zone the time is UTC; an offset may be +HH, +HHMM or +HH:MM.
    // Eight digits are a date, also where there is no such one. Any other integer tells its unit by its
    // size: below 10^11 seconds, below 10^14 milliseconds, below 10^17 microseconds, else nanoseconds. So
    // each unit is told rightly for every time after March 1973.
    // Returns null, or the reason why the text was refused; `time` is then left alone.
    [[nodiscard]] static const char* SetFromText(std::string_view text, long long& time);

    // The same for an integer that has been read already, and is no calendar date.
    [[nodiscard]] static const char* SetFromInteger(unsigned long long count, long long& time);

    // A length of time, "30s", "1m", "4h" or "1d", up to 366 days, in nanoseconds. False: it is none.
    [[nodiscard]] static bool SetPeriodFromText(std::string_view text, long long& period);

    // The midnight UTC that follows.
    [[nodiscard]] static long long GetNextMidnight(long long time);

    // The UTC day, counted since 1970.
    [[nodiscard]] static long long GetDay(long long time);
    // "YYYYMMDD".
    [[nodiscard]] static std::string GetDateAsString(long long day);

    // "YYYYMMDD:HH:MM:SS.nnnnnnnnn", for messages.
    [[nodiscard]] static std::string GetAsString(long long time);
    // For files of our own: nanoseconds since 1970, or where such a number would be read in another unit, as
    // those before March 1973 would, the form of GetAsString.
    [[nodiscard]] static std::string GetAsFileText(long long time);
};
