#pragma once

#include <string>

// Why recorded data could not be read, and where. A value; an empty reason means that nothing went wrong.
struct nxFeedError
{
    std::string file;
    unsigned long long line = 0;  // 1-based; 0: the file as a whole
    unsigned int column = 0;      // 1-based character within the line; 0: the line as a whole
    std::string reason;

    [[nodiscard]] bool IsSet() const { return !reason.empty(); }

    // "FILE:LINE:COLUMN: reason", without the places that are unknown.
    [[nodiscard]] std::string GetText() const;
};
