// A record of a run: refused with a place, or its document and its page are whole, and none of its texts is
// markup.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>

#include "host/report/nxRecordReader.h"
#include "host/report/nxResultDocument.h"
#include "host/report/nxResultPage.h"

namespace {

auto CountTags(std::string_view page)
{
    return std::ranges::count(page, '<');
}

void MakePage(const std::string& document)
{
    static const auto plain = [] {
        std::ostringstream page;
        nxResultPage::Write(page, {{"", "{}", ""}});
        return CountTags(page.view());
    }();
    std::ostringstream page;
    nxResultPage::Write(page, {{"", document, ""}});
    if (CountTags(page.view()) != plain) std::abort();
}

}  // namespace

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
        MakePage(document.str());
    }
    unlink(path);
    return 0;
}
