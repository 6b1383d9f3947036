// A file that describes products: read, or refused with a reason.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "host/market/nxProductFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    char path[] = "/tmp/nx_fuzz_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    close(file);
    std::vector<nxProductDescription> products;
    nxFeedError error;
    if (!nxProductFile::Read(path, products, error) && error.reason.empty()) std::abort();
    unlink(path);
    return 0;
}
