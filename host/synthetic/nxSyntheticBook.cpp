#include "host/synthetic/nxSyntheticBook.h"

#include <algorithm>

void nxSyntheticBook::Add(bool isBid, long long price, unsigned int lots, std::vector<Change>& changes)
{
    Level& level = _sides[isBid ? 1 : 0][_GetKey(isBid, price)];
    level.orders.push_back(lots);
    level.volume += lots;
    _volumes[isBid ? 1 : 0] += lots;
    changes.push_back({isBid, price, level.volume, 0});
}

unsigned long long nxSyntheticBook::Take(bool fromBids, unsigned int lots, std::vector<Change>& changes)
{
    Side& side = _sides[fromBids ? 1 : 0];
    unsigned long long& volume = _volumes[fromBids ? 1 : 0];
    const unsigned long long wanted = std::min<unsigned long long>(lots, volume - 1);
    for (unsigned long long left = wanted; left != 0;) {
        const auto best = side.begin();
        Level& level = best->second;
        const auto traded = static_cast<unsigned int>(std::min(left, level.volume));
        level.volume -= traded;
        volume -= traded;
        left -= traded;
        changes.push_back({fromBids, GetBest(fromBids), level.volume, traded});
        if (level.volume == 0) {
            side.erase(best);
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

unsigned int nxSyntheticBook::Cancel(bool isBid, long long price, std::size_t order,
                                     std::vector<Change>& changes)
{
    Side& side = _sides[isBid ? 1 : 0];
    const auto found = side.find(_GetKey(isBid, price));
    Level& level = found->second;
    if (side.size() == 1 && level.orders.size() == 1) return 0;
    const unsigned int lots = level.orders[order];
    level.orders.erase(level.orders.begin() + static_cast<std::ptrdiff_t>(order));
    level.volume -= lots;
    _volumes[isBid ? 1 : 0] -= lots;
    changes.push_back({isBid, price, level.volume, 0});
    if (level.orders.empty()) side.erase(found);
    return lots;
}

long long nxSyntheticBook::GetBest(bool isBid) const
{
    return _GetKey(isBid, GetSide(isBid).begin()->first);
}
