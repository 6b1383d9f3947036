#pragma once

#include <random>

// Random numbers that are the same to the bit on every machine: the generator's sequence is fixed by the C++
// standard, and what is made of it here takes integers only. The standard library's distributions and the
// logarithm are left out because their results differ between implementations. A value; one thread at a time.
class nxExactRandom
{
public:
    explicit nxExactRandom(unsigned long long seed) : _generator(seed) {}

    // Uniform in 0 ... limit - 1, for a limit above 0.
    unsigned long long GetBelow(unsigned long long limit);

    // Exponential with mean 1, in units of 2^-32. By J. von Neumann's method of comparisons ("Various
    // Techniques Used in Connection With Random Digits", 1951), which needs no logarithm.
    unsigned long long GetExponential();

private:
    std::mt19937_64 _generator;
};
