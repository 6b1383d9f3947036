#pragma once

#include <bit>

#include "host/results/nxSplitMix.h"

// The numbers below a count in a random order, by index and without storing any. Rounds of a Feistel cipher
// mix the halves of the bits (M. Luby and C. Rackoff, "How to Construct Pseudorandom Permutations from
// Pseudorandom Functions", 1988); a result that is not below the count is mixed again until it is (J. Black
// and P. Rogaway, "Ciphers with Arbitrary Finite Domains", 2002), at most four times on average. A value; any
// thread.
class nxPermutation
{
public:
    // A count from 1 to 2^62.
    nxPermutation(unsigned long long count, unsigned long long seed)
        : _count(count), _halfBits((static_cast<unsigned int>(std::bit_width(count - 1)) + 1) / 2)
    {
        nxSplitMix random(seed);
        for (unsigned long long& key : _keys)
            key = random.GetBits();
    }

    // Of an index below the count.
    unsigned long long Get(unsigned long long index) const
    {
        do
            index = _Mix(index);
        while (index >= _count);
        return index;
    }

private:
    unsigned long long _Mix(unsigned long long number) const
    {
        const unsigned long long mask = (1ull << _halfBits) - 1;
        unsigned long long left = number >> _halfBits, right = number & mask;
        for (const unsigned long long key : _keys) {
            const unsigned long long mixed = left ^ (nxSplitMix(key ^ right).GetBits() & mask);
            left = right;
            right = mixed;
        }
        return left << _halfBits | right;
    }

    unsigned long long _count;
    unsigned int _halfBits;
    unsigned long long _keys[6];
};
