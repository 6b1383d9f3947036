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
    // How long an object may be used: as long as the call of this number runs.
    class Life
    {
        friend class nxLuaFrames;
        explicit Life(std::uint64_t number) : _number(number) {}

        std::uint64_t _number;  // whose remainder by Places is the place where it stands
    };
    bool IsOver(Life life) const { return _numbers[life._number % Places] != life._number; }

    // One call, from construction to destruction.
    class Frame
    {
    public:
        explicit Frame(nxLuaFrames& frames)
            : _frames(frames),
              _place(std::min(++frames._depth, Places - 1)),
              _outer(std::exchange(frames._numbers[_place], ++frames._last * Places + _place))
        {
        }
        ~Frame()
        {
            _frames._numbers[_place] = _outer;
            --_frames._depth;
        }
        Frame(const Frame&) = delete;
        Frame& operator=(const Frame&) = delete;

        Life GetLife() const { return Life(_frames._numbers[_place]); }

    private:
        nxLuaFrames& _frames;
        unsigned int _place;
        std::uint64_t _outer;  // of the call that shares the place, below so many that places run out
    };

    // Of what its owner keeps for as long as the script may ask.
    static Life GetLasting() { return Life(0); }

private:
    static constexpr unsigned int Places = 16;

    std::array<std::uint64_t, Places> _numbers{};  // by depth; the first stays 0
    std::uint64_t _last = 0;
    unsigned int _depth = 0;
};
