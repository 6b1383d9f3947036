// A file of recorded data, also a compressed one: read to its end or to an error with a place.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/feed/nxFeed.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    char path[] = "/tmp/nx_fuzz_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    close(file);
    for (const bool lenient : {false, true}) {
        nxFeed feed({.isLenient = lenient});
        if (feed.Open({path}, {})) {
            long long before = INT64_MIN;
            while (const nxFeedEvent* event = feed.Next()) {
                if (event->time < before) std::abort();
                before = event->time;
            }
        }
        if (feed.HasFailed() && feed.GetError().GetText().empty()) std::abort();
    }
    unlink(path);
    return 0;
}
