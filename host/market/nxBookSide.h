#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"
#include "host/feed/nxSide.h"

// One side of a book: its levels from the best one on. Books of recorded markets have thousands of levels,
// of which each change names some dozens, most of them far from the best. So all levels lie in a hash table,
// where a level is set without regard to its neighbours, and only the best ones are kept in order as well.
class nxBookSide
{
public:
    struct Level
    {
        nxDecimal price;  // with the places that it had when the level came
        unsigned int volume = 0;
    };

    explicit nxBookSide(nxSide side) : _side(side) {}

    bool IsEmpty() const { return _count == 0; }
    // Of one that is not empty.
    const Level& GetBest() const { return _top.back(); }
    // 0: no level.
    unsigned int GetVolume(const nxDecimal& price) const;
    // visit(level) from the best level on, or from that price on where it is valid, until it answers false.
    // The visit may not change the side.
    template <class Visit>
    void ForEach(Visit visit, const nxDecimal& from = {}) const;

    // 0 removes the level. Left alone by a price or volume that is not valid.
    void Set(const nxDecimal& price, const nxVolume& volume);
    void Clear();

private:
    // A level of the table, small, since what it costs is mostly the way to it in memory.
    struct Slot
    {
        long long mantissa = 0;
        unsigned int volume = 0;  // 0: free
        unsigned char places = 0;

        nxDecimal GetPrice() const { return nxDecimal::FromMantissa(mantissa, places); }
        bool IsOf(const nxDecimal& price) const
        {
            return places == price.GetDecimalPlaces() ? mantissa == price.GetMantissa() : GetPrice() == price;
        }
    };
    using Levels = std::vector<Level>;

    static constexpr std::size_t FewTop = 32, MostTop = 128;

    std::size_t _GetPlace(const nxDecimal& price) const;
    std::size_t _Find(const nxDecimal& price) const;
    void _Free(std::size_t place);
    void _Grow();
    void _SetTop(const nxDecimal& price, unsigned int volume);
    std::size_t _CountBetter(const nxDecimal& price) const;
    Levels::iterator _FindInTop(const nxDecimal& price) const;
    void _FindTop(std::size_t count) const;

    const nxSide _side;
    std::vector<Slot> _table;  // a power of two, at most two thirds of them in use
    unsigned int _shift = 64;
    std::size_t _count = 0;      // of the levels
    mutable Levels _top;         // the best ones, the best last: mostly a few, and one at least
    mutable Levels _candidates;  // of _FindTop
};

template <class Visit>
void nxBookSide::ForEach(Visit visit, const nxDecimal& from) const
{
    for (std::size_t better = from.IsValid() ? _CountBetter(from) : 0; better < _count; ++better) {
        if (better == _top.size()) _FindTop(2 * better);
        if (!visit(_top[_top.size() - 1 - better])) return;
    }
}
