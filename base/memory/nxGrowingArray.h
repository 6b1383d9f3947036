#pragma once

#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

#include "base/memory/nxLargePages.h"

// An array that grows at its end, in pieces each twice as large as the one before: what it holds never
// moves, and no element pays for moving those in front. Finding a place takes a few instructions more than in
// a vector. Memory behind the end is not touched, but for the rest of a large page.
template <class T>
class nxGrowingArray
{
public:
    std::size_t GetSize() const { return _size; }

    T& operator[](std::size_t place) { return const_cast<T&>(std::as_const(*this)[place]); }
    const T& operator[](std::size_t place) const
    {
        if (place < FirstSize) return _pieces.front()[place];
        const auto piece = static_cast<std::size_t>(std::bit_width(place / FirstSize + 1)) - 1;
        return _pieces[piece][place - _CountBefore(piece)];
    }

    template <class... Arguments>
    T& Append(Arguments&&... arguments)
    {
        if (_size == _room) [[unlikely]]
            _AddPiece();
        T& added = _pieces.back().emplace_back(std::forward<Arguments>(arguments)...);
        ++_size;
        return added;
    }

    void Clear()
    {
        _pieces.clear();
        _size = _room = 0;
    }

private:
    static constexpr std::size_t FirstSize = 256;
    // Places in all the pieces in front of one.
    static constexpr std::size_t _CountBefore(std::size_t piece)
    {
        return FirstSize * ((std::size_t{1} << piece) - 1);
    }

    void _AddPiece()
    {
        const std::size_t room = FirstSize << _pieces.size();
        std::vector<T> piece;
        piece.reserve(room);
        nxUseLargePages(piece.data(), room * sizeof(T));
        _pieces.push_back(std::move(piece));
        _room = _CountBefore(_pieces.size());
    }

    std::vector<std::vector<T>> _pieces;  // with room for all that each is to hold
    std::size_t _size = 0;
    std::size_t _room = 0;  // places in all pieces
};
