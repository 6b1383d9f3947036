#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "host/feed/nxCsvRow.h"
#include "host/feed/nxFeedError.h"

// Whole lines of a file and the rows read out of those that were parsed last. One nxCsvReader has a few,
// which go round between the thread that fills them and the one that takes the rows; each belongs to one of
// the two at a time. Used again, it allocates nothing.
struct nxCsvBlock
{
    static constexpr std::size_t Size = 256 * 1024;  // the longest row, too
    static constexpr std::size_t Step = 128 * 1024;  // read ahead at once
    // Behind the lines, so that the number reader may look at eight bytes at a time.
    static constexpr std::size_t Padding = 32;

    enum class State {
        More,   // the file goes on in the next block
        Last,   // it ends with this one
        Failed  // it breaks behind this one, as `error` tells
    };

    std::unique_ptr<char[]> text;  // none before it is filled for the first time
    const char* begin = nullptr;   // of the lines that are not parsed yet
    const char* end = nullptr;
    std::vector<nxCsvRow> rows;
    std::size_t count = 0;              // of those in `rows` that are this block's
    std::vector<nxFeedError> refusals;  // of the bad ones among them, in their order
    unsigned long long skipped = 0;     // rows so far that the layout does not keep
    std::deque<std::string> names;      // of products, that stand in the text otherwise
    unsigned long long bytesConsumed = 0;
    State state = State::More;
    bool hasOpenEnd = false;  // the file ended within its last line
    nxFeedError error;
};
