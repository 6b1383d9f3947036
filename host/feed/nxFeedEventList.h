#pragma once

#include <span>
#include <vector>

#include "host/feed/nxFeedEvent.h"

// Events of a feed, kept beyond its next step with the levels behind them. Used again, it allocates nothing.
class nxFeedEventList
{
public:
    void Reserve(std::size_t events) { _events.reserve(events); }
    void Clear()
    {
        _events.clear();
        _levels.clear();
    }
    void Add(const nxFeedEvent& event);
    // After the last of them, and before any is asked for.
    void Finish();

    std::span<const nxFeedEvent> Get() const { return _events; }
    std::size_t GetSize() const { return _events.size(); }
    std::size_t GetLevelCount() const { return _levels.size(); }

private:
    std::vector<nxFeedEvent> _events;
    std::vector<nxFeedLevel> _levels;
};
