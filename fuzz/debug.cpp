#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "host/debug/nxDapStream.h"
#include "host/debug/nxDebugDefinitions.h"
#include "host/debug/nxDebugPoints.h"
#include "host/debug/nxLaunch.h"

// Whatever an editor sends: each message is taken whole or not at all, and a request is carried out or
// refused.

namespace {

using Json = nlohmann::json;

void Take(const Json& message, nxDebugDefinitions& definitions)
{
    const Json arguments = message.value("arguments", Json::object());
    const auto set = [&](Json (nxDebugDefinitions::*take)(const Json&)) {
        try {
            const Json told = (definitions.*take)(arguments).value("breakpoints", Json::array());
            if (const auto asked = arguments.find("breakpoints");
                asked != arguments.end() && asked->is_array() && told.size() > asked->size())
                std::abort();
        } catch (const std::exception&) {
        }
    };
    set(&nxDebugDefinitions::SetLines);
    set(&nxDebugDefinitions::SetFunctions);
    set(&nxDebugDefinitions::SetFilters);
    nxDebugPoints points;
    points.Set(definitions.GetAsJson());
    try {
        static_cast<void>(nxLaunch::Read(arguments));
    } catch (const std::exception&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const int file = memfd_create("editor", 0);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) std::abort();
    lseek(file, 0, SEEK_SET);
    const nxDebugSources sources;
    nxDebugDefinitions definitions(sources);
    nxDapStream editor(file, -1);
    while (!editor.IsOver()) {
        editor.Read();
        while (const auto message = editor.Next())
            if (message->is_object()) Take(*message, definitions);
    }
    close(file);
    return 0;
}
