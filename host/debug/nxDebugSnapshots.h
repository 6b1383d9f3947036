#pragma once

#include <vector>

#include "host/debug/nxDebugChannel.h"
#include "host/debug/nxDebugPosition.h"

// The copies of a run's process that wait at earlier positions, in their order. Their number is bounded: the
// further a part of the run lies from where a copy was left last, in time that it took, the fewer are kept of
// it. A copy that is dropped ends.
class nxDebugSnapshots
{
public:
    struct Snapshot
    {
        nxDebugPosition position;
        long long work = 0;  // microseconds that the run took to come there
        nxDebugChannel channel;
    };

    explicit nxDebugSnapshots(std::size_t most = 24) : _most(most) {}

    // In place of one of the same position. The one at `kept` stays.
    void Add(Snapshot snapshot, const nxDebugPosition& kept);
    void DropFrom(const nxDebugPosition& position);
    void Clear() { _snapshots.clear(); }

    std::size_t GetCount() const { return _snapshots.size(); }
    Snapshot& Get(std::size_t index) { return _snapshots[index]; }
    // How many are at or before the position.
    std::size_t CountUpTo(const nxDebugPosition& position) const;
    // Null where there is none.
    Snapshot* Find(const nxDebugPosition& position);

private:
    void _Thin(const nxDebugPosition& kept, long long now);

    const std::size_t _most;
    std::vector<Snapshot> _snapshots;
};
