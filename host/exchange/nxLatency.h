#pragma once

#include <string>

// A time in nanoseconds that a message takes: constant, or drawn evenly from a range.
struct nxLatency
{
    long long least = 0;
    long long most = 0;

    // "MS" or "MIN-MAX", in milliseconds with fractions down to nanoseconds, up to an hour. False, and left
    // alone, for another text.
    [[nodiscard]] bool SetFromText(const std::string& text);
};
