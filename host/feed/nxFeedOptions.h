#pragma once

#include <atomic>
#include <functional>
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
    // Outlives the feed. Once it is true, waiting for the next bytes of a pipe ends in an error.
    const std::atomic<bool>* interrupted = nullptr;
};
