#include "host/debug/nxDebugSources.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "scriptFramework/lua/nxScriptLines.h"

std::string nxDebugSources::_Normalise(const std::string& path)
{
    std::error_code error;
    const auto whole = std::filesystem::weakly_canonical(path, error);
    return error ? path : whole.string();
}

std::optional<std::string> nxDebugSources::Read(const nxRunOptions& options)
{
    nxScriptSource modules;
    for (const std::string& file : options.modules)
        if (auto error = modules.Add(file)) return error;
    for (const nxJobOptions& job : options.jobs) {
        Job& known = _jobs.emplace_back(Job{job.name, modules, {}});
        if (auto error = known.source.Add(job.script)) return error;
        std::string ignored;  // the run tells of a script that does not compile
        known.lines = nxGetLinesWithCode(known.source.GetText(), ignored);
        for (const nxScriptSource::File& file : known.source.GetFiles())
            if (!HasFile(file.path)) _paths.push_back(_Normalise(file.path));
    }
    return std::nullopt;
}

std::optional<nxDebugSources::Place> nxDebugSources::Find(std::size_t job, unsigned int line) const
{
    for (const nxScriptSource::File& file : _jobs[job].source.GetFiles())
        if (line >= file.firstLine && line < file.firstLine + std::max<std::size_t>(1, file.lines.size()))
            return Place{_Normalise(file.path), line - file.firstLine + 1};
    return std::nullopt;
}

template <class Take>
void nxDebugSources::_ForFiles(const std::string& path, Take take) const
{
    const std::string normal = _Normalise(path);
    for (std::size_t job = 0; job < _jobs.size(); ++job)
        for (const nxScriptSource::File& file : _jobs[job].source.GetFiles())
            if (_Normalise(file.path) == normal) take(job, file);
}

bool nxDebugSources::HasFile(const std::string& path) const
{
    return std::ranges::find(_paths, _Normalise(path)) != _paths.end();
}

std::vector<nxDebugSources::Spot> nxDebugSources::GetSpots(const std::string& path, unsigned int line) const
{
    std::vector<Spot> spots;
    _ForFiles(path, [&](std::size_t job, const nxScriptSource::File& file) {
        if (line == 0 || line > file.lines.size()) return;
        const std::vector<unsigned int>& lines = _jobs[job].lines;
        const auto found = std::ranges::lower_bound(lines, file.firstLine + line - 1);
        if (found != lines.end() && *found < file.firstLine + file.lines.size())
            spots.push_back({job, *found, *found - file.firstLine + 1});
    });
    return spots;
}

std::vector<unsigned int> nxDebugSources::GetLines(const std::string& path) const
{
    std::vector<unsigned int> inFile;
    _ForFiles(path, [&](std::size_t job, const nxScriptSource::File& file) {
        if (!inFile.empty()) return;
        for (const unsigned int line : _jobs[job].lines)
            if (line >= file.firstLine && line < file.firstLine + file.lines.size())
                inFile.push_back(line - file.firstLine + 1);
    });
    return inFile;
}

// The engine tells a line of the assembled text as "LINE:FILE" once a call has failed; before that it is the
// number alone.
std::string nxDebugSources::Explain(std::size_t job, const std::string& error) const
{
    const std::size_t begin = error.find("\"]:") + 3;
    unsigned int line = 0;
    const char* const end = error.data() + error.size();
    if (begin < 3 || !error.starts_with("[string \"")) return error;
    const auto [rest, fault] = std::from_chars(error.data() + begin, end, line);
    if (fault != std::errc()) return error;
    const nxScriptSource& source = _jobs[job].source;
    return source.Explain(error.substr(0, begin) + source.GetHelper().Tell(line) + std::string(rest, end))
        .message;
}
