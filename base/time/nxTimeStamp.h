#pragma once

#include <compare>
#include <string>

#include "base/time/nxDateTime.h"
#include "base/time/nxTime.h"

// A moment: a second and the nanoseconds, below 1000000000, that have passed in it. A default one is now, as
// nxTimeSource tells it.
class nxTimeStamp
{
public:
    nxTimeStamp();
    nxTimeStamp(const long long& time, const unsigned int& nanoseconds)
        : _time(time), _nanoseconds(nanoseconds)
    {
    }
    nxTimeStamp(const nxTimeStamp&) = default;
    nxTimeStamp& operator=(const nxTimeStamp&) = default;
    virtual ~nxTimeStamp() = default;

    // From and to nanoseconds since 1970-01-01 UTC, which reach from the year 1677 to 2262; the count of a
    // moment beyond them wraps.
    static nxTimeStamp FromNanoseconds(long long sinceEpoch);
    long long GetTotalNanoseconds() const
    {
        return static_cast<long long>(static_cast<unsigned long long>(_time.GetAsTimeValue()) *
                                          nxTime::NanosecondsPerSecond +
                                      _nanoseconds);
    }

    const nxDateTime& GetAsDateTime() const { return _time; }
    long long GetAsTimeValue() const { return _time.GetAsTimeValue(); }
    unsigned int GetNanoseconds() const { return _nanoseconds; }
    // What has passed of the second, truncated.
    unsigned int GetMicroseconds() const { return _nanoseconds / 1000; }
    unsigned int GetMilliseconds() const { return _nanoseconds / nxTime::NanosecondsPerMillisecond; }
    double GetTotalSecondsAsDouble() const
    {
        return static_cast<double>(_time.GetAsTimeValue()) + static_cast<double>(_nanoseconds) * 1e-9;
    }

    // "YYYYMMDD:HH:MM:SS.nnnnnnnnn"; empty when the second is not a valid date.
    std::string GetAsString() const;

    friend bool operator==(const nxTimeStamp& a, const nxTimeStamp& b) = default;
    friend auto operator<=>(const nxTimeStamp& a, const nxTimeStamp& b) = default;

private:
    nxDateTime _time;
    unsigned int _nanoseconds;
};
