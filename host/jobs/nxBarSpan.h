#pragma once

#include "host/market/nxBarTerms.h"
#include "host/market/nxTradingHours.h"

// The time that a bar covers, moved on from bar to bar. Times are nanoseconds since 1970, ends left out. A
// value.
class nxBarSpan
{
public:
    nxBarSpan(const nxBarTerms& terms, const nxTradingHours& hours) : _terms(terms), _hours(hours) {}

    // Moves to the span that holds the time; false when none does.
    bool Find(long long time);
    // For rows of a day and longer in a rule of trading days: moves to the span that holds the day. `stamp`
    // is what the file says; at midnight UTC it is a date, else a time of the product's zone.
    void FindDay(long long moment, long long stamp);

    long long GetBegin() const { return _begin; }
    // When no more of it can come, which is later than what trades within the hours.
    long long GetEnd() const { return _end; }
    // After FindDay: it was the last one that has a session.
    bool IsLastDay() const { return _day >= _lastDay; }

private:
    bool _FindMultiple(long long time);
    bool _FindSession(long long time);
    bool _FindInSession(long long time);
    // The span of the trading days around the day, up to the midnight after them.
    nxTradingDays _SetDays(long long day);
    void _SetSpan(long long begin, long long end) { _from = _begin = begin, _until = _end = end; }

    nxBarTerms _terms;
    nxTradingHours _hours;
    long long _begin = 0;
    long long _end = 0;
    long long _from = 0;  // within the span: between these the market is known to be open
    long long _until = 0;
    long long _day = 0;
    long long _lastDay = 0;
};
