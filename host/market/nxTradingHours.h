#pragma once

#include <string>
#include <string_view>
#include <vector>

// When a product's market is open: weekly sessions in UTC. Written as sessions joined by commas, each
// `HH:MM-HH:MM` with days in front where it is not every day's:
//
//     14:30-21:00
//     Mon-Fri 08:00-12:00, Mon-Fri 13:00-16:30
//     Sun-Thu 23:00-22:00
//
// A session whose end is not behind its begin ends on the next day; its days are those it begins on. Sessions
// that touch or overlap are one. 00:00-24:00 is the whole day.
class nxTradingHours
{
public:
    // Null when it was read, else why not; then hours stays as it was.
    [[nodiscard]] static const char* SetFromText(std::string_view text, nxTradingHours& hours);

    // No hours were given: the market is not known to open or close.
    bool IsEmpty() const { return _sessions.empty(); }
    // Nanoseconds since 1970. Open from the begin of a session to right before its end.
    bool IsOpen(long long time) const;
    // The first moment behind time at which the market opens or closes; the last of all times when it is
    // always open or always closed.
    long long GetNextChange(long long time) const;
    // The last moment up to time at which it did; the first of all times when there was none.
    long long GetLastChange(long long time) const;

    bool operator==(const nxTradingHours&) const = default;

private:
    struct Session
    {
        // Seconds of the week, which begins on Thursday as 1970 did; end is above begin, and may lie in the
        // next week.
        long long begin;
        long long end;
        bool operator==(const Session&) const = default;
    };

    // Ascend by begin, apart from each other, also across the end of the week.
    std::vector<Session> _sessions;
};
