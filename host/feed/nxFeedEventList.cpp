#include "host/feed/nxFeedEventList.h"

void nxFeedEventList::Add(const nxFeedEvent& event)
{
    if (event.kind == nxFeedKind::Depth)
        _levels.insert(_levels.end(), event.levels.begin(), event.levels.end());
    _events.push_back(event);
}

// Where the levels lie is known now.
void nxFeedEventList::Finish()
{
    if (_levels.empty()) return;
    const nxFeedLevel* level = _levels.data();
    for (nxFeedEvent& event : _events) {
        if (event.kind != nxFeedKind::Depth) continue;
        event.levels = {level, event.levels.size()};
        level += event.levels.size();
    }
}
