#pragma once

#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

/** An array that grows at its end, in pieces each twice as large as the one before: what it holds never
   moves, and no element pays for moving those in front. Finding a place takes a few instructions more than in
   a vector. Memory behind the end of the last piece is not touched. */
template <class T>
class nxGrowingArray
{
public:
    std::size_t GetSize() const { return _size; }

    T& operator[](std::size_t place) { return const_cast<T&>(std::as_const(*this)[place]); }
    const T& operator[](std::size_t place) const
    {
        const auto piece = static_cast<std::size_t>(std::bit_width(place / FirstSize + 1)) - 1;
        return _pieces[piece][place - FirstSize * ((std::size_t{1} << piece) - 1)];
    }

    template <class... Arguments>
    T& Append(Arguments&&... arguments)
    {
        if (_pieces.empty() || _pieces.back().size() == _pieces.back().capacity()) [[unlikely]]
            _AddPiece();
        ++_size;
        return _pieces.back().emplace_back(std::forward<Arguments>(arguments)...);
    }

    void Clear()
    {
        _pieces.clear();
        _size = 0;
    }

private:
    static constexpr std::size_t FirstSize = 256;

    void _AddPiece()
    {
        const std::size_t size = FirstSize << _pieces.size();
        _pieces.emplace_back().reserve(size);
    }

    std::vector<std::vector<T>> _pieces;  // the capacity of each is its size in the end
    std::size_t _size = 0;
};
