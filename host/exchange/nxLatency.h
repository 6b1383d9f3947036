#pragma once

#include <string>

#include "base/values/nxExactRandom.h"

// A time in nanoseconds that a message takes: constant, or drawn evenly from a range.
struct nxLatency
{
    long long least = 0;
    long long most = 0;

    long long Draw(nxExactRandom& random) const
    {
        if (most <= least) return least;
        return least +
               static_cast<long long>(random.GetBelow(static_cast<unsigned long long>(most - least) + 1));
    }
    nxLatency GetTwice() const { return {2 * least, 2 * most}; }
    // "MS" or "MIN-MAX", in milliseconds with fractions down to nanoseconds, up to an hour. False, and left
    // alone, for another text.
    [[nodiscard]] bool SetFromText(const std::string& text);
};
