#include "host/sandbox/nxRunPlace.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "host/jobs/nxScriptSource.h"

// The program's own first byte, and the end of what it was linked with.
extern "C" const char __executable_start, edata;

namespace {

bool AddFile(nxScriptSource& source, const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && !source.Add(path);
}

// "FILE" or "FILE:LINE", of a line of the text that was loaded.
std::string FindFile(const std::string& script, const std::vector<std::string>& modules, unsigned int line)
{
    nxScriptSource source;
    const bool isRead =
        std::ranges::all_of(modules, [&](const std::string& path) { return AddFile(source, path); }) &&
        AddFile(source, script);
    if (line != 0 && isRead)
        for (const nxScriptHelper::Module& file : source.GetHelper().modules)
            if (line >= file.firstLine && line <= file.lastLine)
                return file.name + ":" + std::to_string(line - file.firstLine + 1);
    return script;
}

// A literal of this program; what points elsewhere is not followed.
std::string ReadName(const char* name)
{
    constexpr std::size_t longest = 32;
    std::string text;
    const auto isInProgram = [&](const char* place) {
        return place >= &__executable_start && place < &edata;
    };
    while (isInProgram(name) && text.size() < longest &&
           (std::isalnum(static_cast<unsigned char>(*name)) || *name == '.' || *name == '_' || *name == ':'))
        text += *name++;
    return isInProgram(name) && *name == '\0' ? text : std::string();
}

}  // namespace

nxRunPlace::nxRunPlace(const nxRunPulse& pulse, const std::vector<nxJobOptions>& jobs,
                       const std::vector<std::string>& modules)
{
    const auto call = nxRunPulse::GetCall(pulse.call);
    if (!call || call->job >= jobs.size()) return;
    const nxJobOptions& job = jobs[call->job];
    callback = (jobs.size() == 1 ? "" : job.name + ": ") + FindFile(job.script, modules, pulse.script.line) +
               ": " + call->GetName();
    function = ReadName(pulse.script.function);
}
