#pragma once

#include <cstddef>

// Random numbers from a state of 64 bits: G. L. Steele, D. Lea and C. H. Flood, "Fast Splittable Pseudorandom
// Number Generators", 2014. The same on every machine. A value; one thread at a time.
class nxSplitMix
{
public:
    explicit nxSplitMix(unsigned long long seed) : _state(seed) {}

    unsigned long long GetBits()
    {
        unsigned long long mixed = _state += 0x9E3779B97F4A7C15ull;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ull;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBull;
        return mixed ^ (mixed >> 31);
    }
    // Uniform in [0, 1), of 53 bits.
    double GetNext() { return static_cast<double>(GetBits() >> 11) * 0x1p-53; }
    std::size_t GetBelow(std::size_t limit)
    {
        return static_cast<std::size_t>(GetNext() * static_cast<double>(limit));
    }

private:
    unsigned long long _state;
};
