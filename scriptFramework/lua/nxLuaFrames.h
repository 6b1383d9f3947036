#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

// Which calls into the script are still running, so that an object that is there for one call alone can tell
// whether that call is over. A host may call in again while the script runs, so there may be several, one in
// another: the inner one's end ends its own objects and none of the outer one's. One thread at a time, as the
// state.
class nxLuaFrames
{
public:
    // How long an object may be used. Refers to the nxLuaFrames, which must outlive it.
    class Life
    {
    public:
        bool IsOver() const { return *_place != _number; }

    private:
        friend class nxLuaFrames;
        Life(const std::uint64_t* place, std::uint64_t number) : _place(place), _number(number) {}

        const std::uint64_t* _place;  // where the number of its call stands while that runs
        std::uint64_t _number;
    };

    // One call, from construction to destruction.
    class Frame
    {
    public:
        explicit Frame(nxLuaFrames& frames)
            : _frames(frames),
              _place(&frames._numbers[std::min(++frames._depth, Places - 1)]),
              _outer(std::exchange(*_place, ++frames._last))
        {
        }
        ~Frame()
        {
            *_place = _outer;
            --_frames._depth;
        }
        Frame(const Frame&) = delete;
        Frame& operator=(const Frame&) = delete;

        Life GetLife() const { return {_place, *_place}; }

    private:
        nxLuaFrames& _frames;
        std::uint64_t* _place;
        std::uint64_t _outer;  // of the call that shares the place, below so many that places run out
    };

    // Of what its owner keeps for as long as the script may ask.
    Life GetLasting() const { return {_numbers.data(), 0}; }

private:
    static constexpr unsigned int Places = 16;

    std::array<std::uint64_t, Places> _numbers{};  // by depth; the first stays 0
    std::uint64_t _last = 0;
    unsigned int _depth = 0;
};
