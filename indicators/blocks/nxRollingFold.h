#pragma once

#include <cstddef>
#include <memory>
#include <span>

// The last `period` values folded into one. The values come in blocks of a period: behind a whole block stand
// the folds of its ends, so that a window, which is the end of one block and the beginning of the next, is
// one fold of two. A value costs two additions and, once a block, one more for each of the block. Nothing is
// ever subtracted, so a result depends on the values in the window alone, with the same small rounding after
// a million bars as after ten.
//
// Partial is what a stretch of values comes to: a default-constructed one is that of no values, `older +
// newer` that of two adjoining stretches.
//
// A copy is for trying one value that is not final yet. It shares the values and the folds with its original:
// what it takes in lands where the original's own next value will land, in the place of the value that leaves
// the window, and it folds no block. So the original goes on as if nothing had been.
template <class Partial>
class nxRollingFold
{
public:
    // Period is at least 1.
    explicit nxRollingFold(unsigned int period)
        : _period(period), _values(std::make_shared<Partial[]>(2 * std::size_t{period} + 1))
    {
    }

    // Takes in the newest value and gives what the window comes to.
    Partial Push(const Partial& newest)
    {
        _values[_next] = newest;
        _block = _block + newest;
        ++_next;
        const Partial whole = _GetEnds()[_next] + _block;
        if (_next == _period && !_trial.isOne) _EndBlock();
        if (_count < _period) ++_count;
        return whole;
    }

    bool IsFull() const { return _count == _period; }
    // The values of a full window, in no order of time.
    std::span<const Partial> GetValues() const { return {_values.get(), _period}; }

private:
    // Set in a copy; a move keeps it.
    struct Trial
    {
        Trial() = default;
        Trial(const Trial&) : isOne(true) {}
        Trial(Trial&& other) noexcept : isOne(other.isOne) {}
        bool isOne = false;
    };

    Partial* _GetEnds() const { return _values.get() + _period; }

    void _EndBlock()
    {
        Partial* const ends = _GetEnds();
        for (std::size_t i = _period; i-- > 1;)
            ends[i] = _values[i] + ends[i + 1];
        _block = Partial{};
        _next = 0;
    }

    unsigned int _period;
    unsigned int _next = 0;  // place in the block
    unsigned int _count = 0;
    Trial _trial;
    Partial _block{};                    // of the values of the block that is under way
    std::shared_ptr<Partial[]> _values;  // the window's, and behind them the ends of the block before: from
                                         // each place to its last, and none
};
