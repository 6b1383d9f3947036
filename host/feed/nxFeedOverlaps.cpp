#include "host/feed/nxFeedOverlaps.h"

#include <algorithm>
#include <array>

// Another file's row than the one before.
void nxFeedOverlaps::_Change(Track& track, const nxFeedEvent& event)
{
    auto found = std::ranges::find(track.spans, event.file, &Span::file);
    const bool isKnown = found != track.spans.end();
    if (!isKnown) found = track.spans.insert(found, Span{.file = event.file, .lastTime = event.time});
    Span& arriving = *found;
    for (Span& other : track.spans) {
        if (&other == &arriving) continue;
        // What has come of the other file since a row of this one lies between two of this one.
        if (isKnown && other.pending != 0) {
            other.inside += other.pending;
            other.among = event.file;
        }
        other.pending = 0;
        if (other.lastTime == event.time && arriving.pending == 0) {
            arriving.inside += event.rows;
            arriving.pending -= event.rows;  // that Note is about to add
            arriving.among = other.file;
        }
    }
    track.current = static_cast<std::size_t>(found - track.spans.begin());
}

std::vector<nxFeedOverlaps::Overlap> nxFeedOverlaps::Get() const
{
    constexpr std::array<const char*, KindCount> kinds = {"quote", "depth row", "bar", "trade"};
    std::vector<Overlap> overlaps;
    for (std::size_t place = 0; place < _tracks.size(); ++place) {
        for (const Span& span : _tracks[place].spans) {
            if (span.inside == 0) continue;
            const auto product = static_cast<unsigned int>(place / KindCount);
            const Overlap overlap{product, kinds[place % KindCount], span.file, span.among, span.inside};
            const auto known = std::ranges::find_if(overlaps, [&overlap](const Overlap& other) {
                return other.product == overlap.product && other.kind == overlap.kind &&
                       other.file == overlap.among && other.among == overlap.file;
            });
            if (known == overlaps.end())
                overlaps.push_back(overlap);
            else if (known->rows < overlap.rows)
                *known = overlap;
        }
    }
    return overlaps;
}
