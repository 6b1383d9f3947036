#pragma once

#include <memory>
#include <string>
#include <vector>

// A time zone of the system's data: what clocks on its walls show. Times are seconds since 1970, of UTC or of
// those clocks. Immutable, so any thread may ask; a question costs a binary search. Changes of clocks are
// known up to 2037; later the zone stays as it is then.
class nxTimeZone
{
public:
    // By its IANA name. Null: `reason` tells that the name is none, and which may be meant.
    [[nodiscard]] static std::shared_ptr<const nxTimeZone> Find(const std::string& name, std::string& reason);

    const std::string& GetName() const { return _name; }
    long long GetLocal(long long utc) const;
    // The first of two where clocks are put back. A time that they leave out when they are put forward is the
    // moment at which they are. So a later local time is never an earlier moment.
    long long GetUtc(long long local) const;

    // The local times around a local time that the clocks show once, all with one offset to UTC.
    struct Span
    {
        long long begin = 0, end = 0;  // of [begin, end); empty where the time is shown twice or never
        // The clocks less UTC; of a time shown twice its first, of one never shown that to the moment of the
        // change.
        long long offset = 0;
        bool isTwice = false;        // else, where the span is empty, never
        long long secondOffset = 0;  // where it is shown twice
    };
    Span GetSpan(long long local) const;

private:
    // A time between two changes of the clocks.
    struct Period
    {
        long long begin;  // UTC
        long long localEnd;
        long long offset;  // of the clocks to UTC
    };

    explicit nxTimeZone(const std::string& name) : _name(name) {}

    std::string _name;
    std::vector<Period> _periods;  // ascend, the first from the first of all times, the last to the last
};
