#pragma once

#include <string>
#include <vector>

#include "host/feed/nxFeedEvent.h"

// Finds what stands in two files at once: rows of one kind of one product that lie within the time of another
// file's. Such rows are all delivered, so that a file given twice doubles every volume, and a person should
// know. Quotes and trades of a product may come from a file each. Owned by an nxFeed, used by its thread.
class nxFeedOverlaps
{
public:
    struct Overlap
    {
        unsigned int product;
        const char* kind;
        unsigned int file;
        unsigned int among;  // the other file
        unsigned long long rows;
    };

    // Each event of the feed, in its order.
    void Note(const nxFeedEvent& event)
    {
        const std::size_t place = std::size_t{event.product} * KindCount + _GetKind(event);
        if (place >= _tracks.size()) _tracks.resize(place + 1);
        Track& track = _tracks[place];
        if (track.spans.empty() || track.spans[track.current].file != event.file) [[unlikely]]
            _Change(track, event);
        Span& span = track.spans[track.current];
        span.lastTime = event.time;
        span.pending += event.rows;
    }

    // One for each kind of a product and each file with such rows; of two files only the one with more.
    std::vector<Overlap> Get() const;

private:
    static constexpr std::size_t KindCount = 4;

    // The rows of one file, as far as they have come.
    struct Span
    {
        unsigned int file;
        unsigned int among = 0;
        long long lastTime;
        unsigned long long pending = 0;  // since another file's last row, which may be its last of all
        unsigned long long inside = 0;   // between two rows of another file, or at the time of one
    };
    struct Track
    {
        std::vector<Span> spans;
        std::size_t current = 0;
    };

    static std::size_t _GetKind(const nxFeedEvent& event)
    {
        if (event.kind == nxFeedKind::Quote) return event.quote.IsTrade() ? 3 : 0;
        return static_cast<std::size_t>(event.kind);
    }
    static void _Change(Track& track, const nxFeedEvent& event);

    std::vector<Track> _tracks;  // by product and kind
};
