#pragma once

#include <bit>
#include <cstddef>
#include <memory>
#include <span>

// The last `period` values folded into one, as the root of a binary tree over a ring of them: a value costs
// log2(period) additions, nothing is ever subtracted, so a result depends on the values in the window alone,
// with the same small rounding after a million bars as after ten.
//
// Partial is what a stretch of values comes to: a default-constructed one is that of no values, `older +
// newer` that of two adjoining stretches.
//
// A copy shares the tree with its original and has its own place in it. What the copy takes in next lands
// where the original's own next value will land, in the place of the value that leaves the window: so a copy
// may try a value that is not final yet, again and again, and the original goes on as if nothing had been.
// One bar ahead is as far as it goes.
template <class Partial>
class nxRollingFold
{
public:
    // Period is at least 1.
    explicit nxRollingFold(unsigned int period)
        : _period(period), _leaves(std::bit_ceil(period)), _nodes(std::make_shared<Partial[]>(2 * _leaves))
    {
    }

    // Takes in the newest value and gives what the window comes to.
    Partial Push(const Partial& newest)
    {
        std::size_t node = _leaves + _next;
        Partial upToNewest = newest;
        Partial older{};  // the ring's slots behind the newest
        Partial whole = newest;
        for (_nodes[node] = whole; node > 1; _nodes[node] = whole) {
            const Partial& sibling = _nodes[node ^ 1];
            if (node & 1) {
                whole = sibling + whole;
                upToNewest = sibling + upToNewest;
            } else {
                whole = whole + sibling;
                older = older + sibling;
            }
            node /= 2;
        }
        _next = _next + 1 == _period ? 0 : _next + 1;
        if (_count < _period) ++_count;
        return older + upToNewest;
    }

    bool IsFull() const { return _count == _period; }
    // The values of a full window, in no order of time.
    std::span<const Partial> GetValues() const { return {_nodes.get() + _leaves, _period}; }

private:
    unsigned int _period;
    unsigned int _next = 0;
    unsigned int _count = 0;
    std::size_t _leaves;
    std::shared_ptr<Partial[]>
        _nodes;  // the root is 1, the children of n are 2n and 2n + 1, the ring is the last row
};
