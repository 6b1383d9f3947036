#include "host/feed/nxTimeZone.h"

#include <date/tz.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string_view>

#include "base/time/nxTime.h"

namespace {

// Recorded times lie between, and offsets are below a day.
constexpr date::sys_seconds Earliest{std::chrono::seconds{-10'000'000'000}};
constexpr date::sys_seconds Latest{std::chrono::seconds{10'000'000'000}};

char Fold(char c)
{
    if (c >= 'A' && c <= 'Z') return static_cast<char>(c - 'A' + 'a');
    return c == ' ' || c == '-' ? '_' : c;
}

// How many letters must be put in, taken out or exchanged to make one of the other.
std::size_t GetDistance(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t exchanged = diagonal + (Fold(one[i]) == Fold(other[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

// The zone whose name, or city, is written nearly so; empty where none is.
std::string FindSimilar(const std::vector<date::time_zone>& zones, const std::string& name)
{
    std::string found;
    if (name.size() > 64) return found;  // longer than any
    std::size_t least = name.size() / 4 + 1;
    for (const date::time_zone& zone : zones) {
        const std::string_view whole = zone.name();
        const std::string_view city = whole.substr(whole.rfind('/') + 1);
        const std::size_t distance = std::min(GetDistance(name, whole), GetDistance(name, city));
        if (distance >= least) continue;
        least = distance;
        found = whole;
    }
    return found;
}

const date::time_zone* Locate(const std::string& name, std::string& reason)
{
    try {
        const std::vector<date::time_zone>& zones = date::get_tzdb().zones;
        const auto zone = std::ranges::find(zones, name, &date::time_zone::name);
        if (zone != zones.end()) return &*zone;
        const std::string similar = FindSimilar(zones, name);
        reason = "unknown zone \"" + name + "\"; " +
                 (similar.empty() ? "zones are named as in \"America/New_York\" or \"Asia/Tokyo\""
                                  : "the nearest name is \"" + similar + "\"");
    } catch (const std::runtime_error& failure) {
        reason = std::string("the system's time zones cannot be read: ") + failure.what();
    }
    return nullptr;
}

}  // namespace

std::shared_ptr<const nxTimeZone> nxTimeZone::Find(const std::string& name, std::string& reason)
{
    const date::time_zone* const known = Locate(name, reason);
    if (known == nullptr) return nullptr;
    const std::shared_ptr<nxTimeZone> zone(new nxTimeZone(name));
    long long begin = std::numeric_limits<long long>::min();
    for (date::sys_seconds time = Earliest;;) {
        const date::sys_info info = known->get_info(time);
        const bool isLast = info.end >= Latest;
        const long long end = info.end.time_since_epoch().count();
        const long long offset = info.offset.count();
        zone->_periods.push_back({begin, isLast ? nxTime::Never : end + offset, offset});
        if (isLast) return zone;
        begin = end;
        time = info.end;
    }
}

long long nxTimeZone::GetLocal(long long utc) const
{
    const auto later = std::ranges::upper_bound(_periods, utc, {}, &Period::begin);
    return utc + std::prev(later)->offset;
}

long long nxTimeZone::GetUtc(long long local) const
{
    const auto period = std::ranges::upper_bound(_periods, local, {}, &Period::localEnd);
    return std::max(local - period->offset, period->begin);
}

nxTimeZone::Span nxTimeZone::GetSpan(long long local) const
{
    const auto period = std::ranges::upper_bound(_periods, local, {}, &Period::localEnd);
    const auto getBegin = [this](auto at) {
        return at == _periods.begin() ? at->begin : at->begin + at->offset;
    };
    const auto next = std::next(period);
    const bool isLast = next == _periods.end();
    Span span{getBegin(period), period->localEnd, period->offset};
    if (period != _periods.begin()) span.begin = std::max(span.begin, std::prev(period)->localEnd);
    if (!isLast) span.end = std::min(span.end, getBegin(next));
    if (local >= span.begin && local < span.end) return span;
    const bool isTwice = local >= span.end;
    return {local, local, isTwice ? period->offset : local - period->begin, isTwice,
            isTwice ? next->offset : 0};
}
