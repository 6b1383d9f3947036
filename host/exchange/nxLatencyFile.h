#pragma once

#include <string>

#include "host/exchange/nxLatency.h"
#include "host/feed/nxFeedError.h"

// Latencies as they were recorded: CSV with the columns time, send and ack, by time; plain, .gz or .zst. What
// is sent takes what the last row at that time or before it has, and what is sent earlier the first row's.
// Static functions only; any thread.
class nxLatencyFile
{
public:
    // "-", or a text with a "/" or ".csv" in it; others are durations.
    [[nodiscard]] static bool IsNamedBy(const std::string& text);
    // The way of requests and that of answers; either may be null. False: error tells why and where.
    [[nodiscard]] static bool Read(const std::string& path, nxLatency* request, nxLatency* answer,
                                   nxFeedError& error);
};
