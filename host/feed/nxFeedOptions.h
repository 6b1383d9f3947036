#pragma once

#include <atomic>
#include <functional>
#include <limits>
#include <map>
#include <string>

#include "host/feed/nxFileForm.h"

// How recorded data is read.
struct nxFeedOptions
{
    // Bad rows are counted and skipped; otherwise the first one ends the reading.
    bool isLenient = false;
    // The time of a bars file's row is when the bar began. It is delivered one period of its product later;
    // otherwise the time is that of the end, and of the delivery. Not given: as the file's layout says, else
    // the end.
    std::optional<bool> barsBearStart = {};
    // Of these products the bars are this many nanoseconds apart; "" is every other product. Without it the
    // first rows tell.
    std::map<std::string, long long, std::less<>> barPeriods = {};
    // What is told of files in none of our own formats.
    nxFileFormOptions form = {};
    // Sizes that are no whole number of lots, or too many, are rounded, and what that changes is counted.
    bool roundsVolumes = false;
    // For an import: rows as they stand. Sizes are not counted in lots, a row may be earlier than the one
    // before, bars may come twice, and each row of depth is an event of its own.
    bool takesRowsAsTheyStand = false;
    // Lot sizes of products that nothing else describes.
    std::map<std::string, nxDecimal, std::less<>> lotSizes = {};
    // The part of the data that counts, in nanoseconds since 1970: nothing comes after it, and what is before
    // it belongs to no history, but to the prices and books that later rows change.
    long long begin = std::numeric_limits<long long>::min();
    long long end = std::numeric_limits<long long>::max();
    // Threads read, and judge, ahead of who takes the events; without it rows are read when their turn comes,
    // and no thread is made.
    bool readsAhead = true;
    // Outlives the feed. Once it is true, waiting for the next bytes of a pipe ends in an error.
    const std::atomic<bool>* interrupted = nullptr;
};
