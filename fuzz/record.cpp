// A record of a run: refused with a place, or its document is whole.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>

#include "host/report/nxRecordReader.h"
#include "host/report/nxResultDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    char path[] = "/tmp/nx_fuzz_XXXXXX";
    const int file = mkstemp(path);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    close(file);
    nxRecordReader reader;
    if (const auto error = reader.Read(path)) {
        if (!error->starts_with(path)) std::abort();
    } else {
        std::ostringstream document;
        nxResultDocument::Write(document, reader.GetResult());
        if (!document.view().ends_with("}\n")) std::abort();
    }
    unlink(path);
    return 0;
}
