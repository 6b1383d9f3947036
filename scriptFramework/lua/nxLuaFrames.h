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
    // How long an object may be used: as long as the call of this number runs. Its remainder by Places is the
    // place where the number stands meanwhile.
    class Life
    {
    public:
        static constexpr unsigned int Bits = 45;

        explicit Life(std::uint64_t number) : _number(number) {}
        std::uint64_t GetNumber() const { return _number; }

    private:
        friend class nxLuaFrames;
        std::uint64_t _number;
    };
    bool IsOver(Life life) const { return _numbers[life._number % Places] != life._number; }

    // One call, from construction to destruction.
    class Frame
    {
    public:
        explicit Frame(nxLuaFrames& frames)
            : _frames(frames),
              _place(std::min(++frames._depth, Places - 1)),
              _kept(frames._keptCount),
              _outer(std::exchange(frames._numbers[_place], frames._MakeNumber(_place)))
        {
        }
        ~Frame()
        {
            _frames._numbers[_place] = _outer;
            _frames._keptCount = _kept;
            --_frames._depth;
        }
        Frame(const Frame&) = delete;
        Frame& operator=(const Frame&) = delete;

        Life GetLife() const { return Life(_frames._numbers[_place]); }

    private:
        nxLuaFrames& _frames;
        unsigned int _place;
        unsigned int _kept;
        std::uint64_t _outer;  // of the call that shares the place, below so many that places run out
    };

    // Of what its owner keeps for as long as the script may ask.
    static Life GetLasting() { return Life(0); }

    // Keeps the address of an object of the innermost call until that ends. Answers its slot, or SlotCount
    // when there is none left or the life is another's.
    static constexpr unsigned int SlotCount = 256;
    unsigned int Keep(void* object, Life life)
    {
        const bool isInnermost = _depth != 0 && _numbers[std::min(_depth, Places - 1)] == life._number;
        if (!isInnermost || _keptCount == SlotCount) return SlotCount;
        _kept[_keptCount] = object;
        return _keptCount++;
    }
    void* GetKept(unsigned int slot) const { return _kept[slot]; }

private:
    static constexpr unsigned int Places = 16;

    // Never 0, as no call has the first place.
    std::uint64_t _MakeNumber(unsigned int place)
    {
        constexpr std::uint64_t limit = (std::uint64_t{1} << Life::Bits) - 1;
        return (++_last * Places + place) & limit;
    }

    std::array<std::uint64_t, Places> _numbers{};  // by depth; the first stays 0
    std::array<void*, SlotCount> _kept{};          // a stack, of which each call has a part
    std::uint64_t _last = 0;
    unsigned int _keptCount = 0;
    unsigned int _depth = 0;
};
