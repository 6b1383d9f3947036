#pragma once

#include <compare>
#include <string>

#include "base/enums/nxErrorEnum.h"
#include "base/time/nxDateTimeSpan.h"

// A second of the calendar: a count of seconds since 1970-01-01 UTC, of which 0 and 1 are reserved as the
// marks null and no-change. Null by default. A plain value, ordered by its count.
class nxDateTime
{
public:
    static constexpr long long NX_DATE_TIME_NULL = 0;
    static constexpr long long NX_DATE_TIME_NO_CHANGE = 1;

    nxDateTime() = default;
    nxDateTime(const long long& time) : _time(time) {}
    // The calendar date in UTC; what is below a second is dropped. Throws std::invalid_argument when there
    // is no such second in the years 1 to 9999.
    nxDateTime(int year, int month, int day, int hour, int minute, int second, unsigned int fraction);

    void SetNull() { _time = NX_DATE_TIME_NULL; }
    void SetNoChange() { _time = NX_DATE_TIME_NO_CHANGE; }
    bool IsNull() const { return _time == NX_DATE_TIME_NULL; }
    bool IsNoChange() const { return _time == NX_DATE_TIME_NO_CHANGE; }
    // Neither mark, and in the years 1 to 9999.
    bool IsValid() const;

    // The parts of the calendar date in UTC; 0 for a date that is not valid.
    int GetYear() const;
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;

    // The count of seconds, marks included.
    long long GetAsTimeValue() const { return _time; }

    // "%Y%m%d:%H:%M:%S"; empty for a date that is not valid.
    std::string GetAsString() const;
    // Knows %Y %m %d %H %M %S and %%; all else stands as it is. Empty for a date that is not valid.
    std::string GetAsString(const std::string& format) const;
    // Reads YYYYMMDD, YYYYMMDD:HH:MM or YYYYMMDD:HH:MM:SS and nothing else, and checks the calendar. On
    // nxError_InvalidDate `date` is null. A text of one of the two marked seconds is refused too: it could
    // not be told from the mark.
    static nxErrorEnum SetFromString(const std::string& text, nxDateTime& date);

    // A mark stays what it is; a sum that does not fit is null.
    nxDateTime operator+(const nxDateTimeSpan& span) const;

    // The second of nxTimeSource::Now().
    static nxDateTime GetCurrentTimeAsGMT();

    friend bool operator==(const nxDateTime&, const nxDateTime&) = default;
    friend auto operator<=>(const nxDateTime&, const nxDateTime&) = default;

private:
    long long _time = NX_DATE_TIME_NULL;
};
