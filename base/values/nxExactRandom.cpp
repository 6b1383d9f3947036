#include "base/values/nxExactRandom.h"

unsigned long long nxExactRandom::GetBelow(unsigned long long limit)
{
    // The numbers below 2^64 mod limit are drawn again, so that what remains is a whole multiple of the
    // limit.
    const unsigned long long surplus = (0 - limit) % limit;
    for (;;) {
        const unsigned long long number = _generator();
        if (number >= surplus) return number % limit;
    }
}

unsigned long long nxExactRandom::GetExponential()
{
    // A run u1 > u2 > ... > un <= u(n+1) of uniform numbers has an odd length with probability exp(-u1). So
    // the first u1 with an odd run is the fraction, and the number of even runs before it the whole part.
    for (unsigned long long whole = 0;; ++whole) {
        const unsigned long long first = _generator();
        bool isOdd = true;
        unsigned long long last = first;
        for (unsigned long long next = _generator(); next < last; next = _generator()) {
            last = next;
            isOdd = !isOdd;
        }
        if (isOdd) return (whole << 32) | (first >> 32);
    }
}
