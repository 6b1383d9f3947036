#include "host/debug/nxDebugSnapshots.h"

#include <algorithm>
#include <cmath>

std::size_t nxDebugSnapshots::CountUpTo(const nxDebugPosition& position) const
{
    const auto after = std::ranges::upper_bound(_snapshots, position, {}, &Snapshot::position);
    return static_cast<std::size_t>(after - _snapshots.begin());
}

nxDebugSnapshots::Snapshot* nxDebugSnapshots::Find(const nxDebugPosition& position)
{
    const std::size_t count = CountUpTo(position);
    return count == 0 || _snapshots[count - 1].position != position ? nullptr : &_snapshots[count - 1];
}

void nxDebugSnapshots::Add(Snapshot snapshot, const nxDebugPosition& kept)
{
    if (Snapshot* const same = Find(snapshot.position)) {
        *same = std::move(snapshot);
        return;
    }
    const long long work = snapshot.work;
    const auto place = _snapshots.begin() + static_cast<std::ptrdiff_t>(CountUpTo(snapshot.position));
    _snapshots.insert(place, std::move(snapshot));
    if (_snapshots.size() > _most) _Thin(kept, work);
}

// Drops the one whose loss is least, seen from where the run is: the gap that it would leave, against how far
// off it lies. So gaps grow with the distance, also around an early place that a person went back to. The
// first stays, so that all can be reached.
void nxDebugSnapshots::_Thin(const nxDebugPosition& kept, long long now)
{
    auto least = _snapshots.end();
    double leastLoss = 0.0;
    for (auto place = _snapshots.begin() + 1; place + 1 < _snapshots.end(); ++place) {
        if (place->position == kept) continue;
        const auto gap = static_cast<double>((place + 1)->work - (place - 1)->work);
        const auto distance = std::abs(static_cast<double>(now - place->work));
        const double loss = gap / (distance + 1.0);
        if (least == _snapshots.end() || loss < leastLoss) {
            least = place;
            leastLoss = loss;
        }
    }
    if (least != _snapshots.end()) _snapshots.erase(least);
}

void nxDebugSnapshots::DropFrom(const nxDebugPosition& position)
{
    std::erase_if(_snapshots, [&](const Snapshot& snapshot) { return snapshot.position >= position; });
}
