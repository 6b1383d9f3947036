// A file of recorded latencies: refused with a place, or every message takes one that the file holds.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "base/time/nxTime.h"
#include "host/exchange/nxLatencyFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    char path[] = "/tmp/nx_fuzz_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    close(file);
    nxLatency request, answer;
    nxFeedError error;
    nxExactRandom random(1);
    if (nxLatencyFile::Read(path, &request, &answer, error)) {
        for (const long long time : {-nxTime::Never, request.samples->back().time, nxTime::Never}) {
            const long long drawn = request.Draw(random, time);
            if (drawn < 0 || drawn < request.least || drawn > request.most) std::abort();
        }
        if (answer.samples->size() != request.samples->size()) std::abort();
    } else if (error.GetText().empty()) {
        std::abort();
    }
    unlink(path);
    return 0;
}
