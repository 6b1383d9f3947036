#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>

// How recorded data is read.
struct nxFeedOptions
{
    // Bad rows are counted and skipped; otherwise the first one ends the reading.
    bool isLenient = false;
    // The time of a bars file's row is when the bar began. It is delivered one period of its product later;
    // otherwise the time is that of the end, and of the delivery.
    bool barsBearStart = false;
    // Of these products the bars are this many nanoseconds apart; "" is every other product. Without it the
    // first rows tell.
    std::map<std::string, long long, std::less<>> barPeriods = {};
    // Outlives the feed. Once it is true, waiting for the next bytes of a pipe ends in an error.
    const std::atomic<bool>* interrupted = nullptr;
};
