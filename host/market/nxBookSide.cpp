#include "host/market/nxBookSide.h"

#include <algorithm>
#include <bit>

#include "base/values/nxPowersOfTen.h"

// Numbers that are equal have one place, however many places they have behind the point.
std::size_t nxBookSide::_GetPlace(const nxDecimal& price) const
{
    constexpr std::uint64_t golden =
        0x9E3779B97F4A7C15;  // 2^64 by the golden ratio, for multiplicative hashing
    const auto power =
        static_cast<std::uint64_t>(nxPowersOfTen[nxDecimal::MaxDecimalPlaces - price.GetDecimalPlaces()]);
    return static_cast<std::size_t>(static_cast<std::uint64_t>(price.GetMantissa()) * power * golden >>
                                    _shift);
}

// The level's place in the table, or the free one where it would be.
std::size_t nxBookSide::_Find(const nxDecimal& price) const
{
    std::size_t place = _GetPlace(price);
    while (_table[place].volume != 0 && !_table[place].IsOf(price))
        place = (place + 1) & (_table.size() - 1);
    return place;
}

// Levels behind it move up, unless their own place lies behind the gap.
void nxBookSide::_Free(std::size_t place)
{
    const std::size_t mask = _table.size() - 1;
    for (std::size_t next = (place + 1) & mask; _table[next].volume != 0; next = (next + 1) & mask) {
        const std::size_t wanted = _GetPlace(_table[next].GetPrice());
        if (((next - wanted) & mask) < ((next - place) & mask)) continue;
        _table[place] = _table[next];
        place = next;
    }
    _table[place].volume = 0;
}

void nxBookSide::_Grow()
{
    constexpr std::size_t least = 64;
    std::vector<Slot> before(std::max(least, 2 * _table.size()));
    before.swap(_table);
    _shift = 64 - static_cast<unsigned int>(std::countr_zero(_table.size()));
    for (const Slot& slot : before)
        if (slot.volume != 0) _table[_Find(slot.GetPrice())] = slot;
}

unsigned int nxBookSide::GetVolume(const nxDecimal& price) const
{
    return _count == 0 || !price.IsValid() ? 0 : _table[_Find(price)].volume;
}

void nxBookSide::Set(const nxDecimal& price, const nxVolume& volume)
{
    if (!price.IsValid() || !volume.IsValid()) return;
    if (3 * _count >= 2 * _table.size()) _Grow();
    const std::size_t place = _Find(price);
    Slot& slot = _table[place];
    const bool isThere = slot.volume != 0;
    if (!isThere && volume.GetValue() == 0) return;
    const bool isTop = _count == _top.size() || !nxIsBetter(_side, _top.front().price, price);
    if (isThere) {
        slot.volume = volume.GetValue();
    } else {
        slot = {price.GetMantissa(), volume.GetValue(), price.GetDecimalPlaces()};
        ++_count;
    }
    if (volume.GetValue() == 0) {
        --_count;
        _Free(place);
    }
    if (isTop) _SetTop(price, volume.GetValue());
}

void nxBookSide::Clear()
{
    std::ranges::fill(_table, Slot());
    _top.clear();
    _count = 0;
}

// The first that is not worse.
nxBookSide::Levels::iterator nxBookSide::_FindInTop(const nxDecimal& price) const
{
    const auto isWorse = [&](const nxDecimal& a, const nxDecimal& b) { return nxIsBetter(_side, b, a); };
    return std::ranges::lower_bound(_top, price, isWorse, &Level::price);
}

// Of the levels.
std::size_t nxBookSide::_CountBetter(const nxDecimal& price) const
{
    while (_top.size() < _count && nxIsBetter(_side, _top.front().price, price))
        _FindTop(2 * _top.size());
    const auto level = _FindInTop(price);
    const std::ptrdiff_t isThere = level != _top.end() && level->price == price ? 1 : 0;
    return static_cast<std::size_t>(_top.end() - level - isThere);
}

void nxBookSide::_SetTop(const nxDecimal& price, unsigned int volume)
{
    const auto level = _FindInTop(price);
    const bool isThere = level != _top.end() && level->price == price;
    if (volume == 0) {
        if (isThere) _top.erase(level);
        if (_top.empty() && _count != 0) _FindTop(FewTop);
    } else if (isThere) {
        level->volume = volume;
    } else {
        _top.insert(level, {price, volume});
        if (_top.size() > MostTop) _top.erase(_top.begin(), _top.end() - FewTop);
    }
}

// Puts that many of the best levels in order, or all.
void nxBookSide::_FindTop(std::size_t count) const
{
    _candidates.clear();
    for (const Slot& slot : _table)
        if (slot.volume != 0) _candidates.push_back({slot.GetPrice(), slot.volume});
    const auto isBetter = [&](const Level& a, const Level& b) { return nxIsBetter(_side, a.price, b.price); };
    const auto end = _candidates.begin() + static_cast<std::ptrdiff_t>(std::min(count, _candidates.size()));
    std::partial_sort(_candidates.begin(), end, _candidates.end(), isBetter);
    _top.assign(std::make_reverse_iterator(end), _candidates.rend());
}
