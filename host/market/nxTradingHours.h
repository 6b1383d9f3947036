#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "host/market/nxTradingCalendar.h"

// A session as its exchange writes it, though the market may stay open beyond it: nanoseconds since 1970.
struct nxOpenSession
{
    long long begin;
    long long end;
    long long tradingDay;  // since 1970
};

// When a product's market is open: weekly sessions, in UTC or in the zone of a calendar that also knows
// holidays and short days. Sessions are written joined by commas, each `HH:MM-HH:MM` with days in front where
// it is not every day's:
//
//     14:30-21:00
//     Mon-Fri 08:00-12:00, Mon-Fri 13:00-16:30
//     Sun-Thu 23:00-22:00
//
// A session whose end is not after its begin ends on the next day; its days are those it begins on. Sessions
// may touch, but not overlap. Where they touch, the market closes and opens at one moment; only at midnight
// it stays open, so that 00:00-24:00 is the whole day and never closes.
//
// A value that shares its calendar, so copies are cheap; any thread may ask it. No question allocates.
class nxTradingHours
{
public:
    nxTradingHours() = default;
    explicit nxTradingHours(nxTradingCalendar calendar);
    // In UTC. Null when it was read, else why not; then hours stays as it was.
    [[nodiscard]] static const char* SetFromText(std::string_view text, nxTradingHours& hours);

    // No hours were given: the market is not known to open or close.
    bool IsEmpty() const { return _calendar == nullptr; }
    // Nanoseconds since 1970. Open from the begin of a session to right before its end.
    bool IsOpen(long long time) const;
    // The first moment after time at which the market opens or closes, perhaps both; the last of all times
    // when it never does.
    long long GetNextChange(long long time) const;
    // The last moment up to time at which it did; the first of all times when there was none.
    long long GetLastChange(long long time) const;
    // The session of an open market; without hours it is the day, in UTC.
    std::optional<nxOpenSession> FindSession(long long time) const;
    // For hours that are not empty.
    const nxTradingCalendar& GetCalendar() const { return *_calendar; }

    bool operator==(const nxTradingHours& other) const;

private:
    struct Place
    {
        long long number;  // in the calendar
        nxTradingSession session;
    };

    // The first session that ends after that second; nothing when none does.
    std::optional<Place> _FindSession(long long second) const;
    std::optional<long long> _FindNextChange(long long second) const;
    std::optional<long long> _FindLastChange(long long second) const;

    std::shared_ptr<const nxTradingCalendar> _calendar;  // null: no hours
    bool _neverCloses = false;
};
