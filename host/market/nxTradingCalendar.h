#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxTimeZone.h"

// From opening to closing, in seconds since 1970; the end is left out.
struct nxTradingSession
{
    long long begin;
    long long end;

    bool IsEmpty() const { return begin >= end; }
    bool operator==(const nxTradingSession&) const = default;
};

// Trading days one after the other: from the opening of the first to the closing of the last, in UTC.
struct nxTradingDays
{
    nxTradingSession span{0, 0};
    long long last = 0;  // of the days that have a session
};

// The sessions of a market as its exchange writes them: weekly ones in local time, written as for
// nxTradingHours, and the days on which they differ. Put together once, then handed to nxTradingHours.
class nxTradingCalendar
{
public:
    // Null when it was read, else why not; then the calendar stays as it was.
    [[nodiscard]] static const char* SetFromText(std::string_view text, nxTradingCalendar& calendar);
    // HH:MM as seconds, up to 24:00; below 0 where it is none.
    [[nodiscard]] static long long ReadTimeOfDay(std::string_view text);

    // UTC without one.
    void SetZone(std::shared_ptr<const nxTimeZone> zone) { _zone = std::move(zone); }
    // A session belongs to the day in which it ends; one that ends at midnight to the day that ends then.
    // Days count from 1970; `close` is in seconds of the day. Empty when it was taken, else why not.
    [[nodiscard]] std::string AddHoliday(long long day);
    [[nodiscard]] std::string AddShortDay(long long day, long long close);

    bool IsEmpty() const { return _sessions.empty(); }
    // Sessions are numbered through all weeks. The number of the last one that has begun by that UTC time.
    long long FindNumber(long long utc) const;
    // In UTC. Empty when it is not held: on a holiday, or where clocks leave it out.
    nxTradingSession GetSession(long long number) const;
    // Its trading day, in days since 1970.
    long long GetTradingDay(long long number) const;
    // The sessions of the trading days from `first` on, `end` left out; an empty span when none is held.
    nxTradingDays GetTradingDays(long long first, long long end) const;
    // What the zone's calendars and clocks show.
    long long GetLocal(long long utc) const { return _zone == nullptr ? utc : _zone->GetLocal(utc); }
    long long GetUtc(long long local) const { return _zone == nullptr ? local : _zone->GetUtc(local); }
    // It goes on as the one after it. That is so at midnight, where sessions are divided by the way they are
    // written only.
    bool GoesOn(long long number) const;
    // Always open, in every week.
    bool NeverCloses() const;
    // Of the sessions from the given one on, or back to it, those behind the result are as in each week.
    long long GetLastSpecial(long long number) const;
    long long GetFirstSpecial(long long number) const;

    bool operator==(const nxTradingCalendar& other) const;

private:
    struct SpecialDay
    {
        long long day;
        long long close;
        bool operator==(const SpecialDay&) const = default;
    };

    long long _GetCount() const { return static_cast<long long>(_sessions.size()); }
    nxTradingSession _GetWeekly(long long number) const;
    nxTradingSession _GetLocal(long long number) const;
    std::string _AddSpecialDay(long long day, long long close);

    // Of one week, which begins on Thursday as 1970 did; an end may lie in the next one. Ascend; they may
    // touch.
    std::vector<nxTradingSession> _sessions;
    std::vector<SpecialDay> _specialDays;  // ascend
    std::shared_ptr<const nxTimeZone> _zone;
};
