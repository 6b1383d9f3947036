#include "host/synthetic/nxSyntheticBook.h"

#include <algorithm>

void nxSyntheticBook::Add(nxSide side, long long price, unsigned int lots, std::vector<Change>& changes)
{
    Level& level = _levels[side][_GetKey(side, price)];
    level.orders.push_back(lots);
    level.volume += lots;
    _volumes[side] += lots;
    changes.push_back({side, price, level.volume, 0});
}

unsigned long long nxSyntheticBook::Take(nxSide side, unsigned int lots, std::vector<Change>& changes)
{
    Levels& levels = _levels[side];
    unsigned long long& volume = _volumes[side];
    const unsigned long long wanted = std::min<unsigned long long>(lots, volume - 1);
    for (unsigned long long left = wanted; left != 0;) {
        const auto best = levels.begin();
        Level& level = best->second;
        const auto traded = static_cast<unsigned int>(std::min(left, level.volume));
        level.volume -= traded;
        volume -= traded;
        left -= traded;
        changes.push_back({side, GetBest(side), level.volume, traded});
        if (level.volume == 0) {
            levels.erase(best);
            continue;
        }
        unsigned int owed = traded;
        std::size_t filled = 0;
        while (owed >= level.orders[filled])
            owed -= level.orders[filled++];
        level.orders[filled] -= owed;
        level.orders.erase(level.orders.begin(), level.orders.begin() + static_cast<std::ptrdiff_t>(filled));
    }
    return wanted;
}

unsigned int nxSyntheticBook::Cancel(nxSide side, long long price, std::size_t order,
                                     std::vector<Change>& changes)
{
    Levels& levels = _levels[side];
    const auto found = levels.find(_GetKey(side, price));
    Level& level = found->second;
    if (levels.size() == 1 && level.orders.size() == 1) return 0;
    const unsigned int lots = level.orders[order];
    level.orders.erase(level.orders.begin() + static_cast<std::ptrdiff_t>(order));
    level.volume -= lots;
    _volumes[side] -= lots;
    changes.push_back({side, price, level.volume, 0});
    if (level.orders.empty()) levels.erase(found);
    return lots;
}

long long nxSyntheticBook::GetBest(nxSide side) const
{
    return _GetKey(side, GetLevels(side).begin()->first);
}
