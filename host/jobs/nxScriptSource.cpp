#include "host/jobs/nxScriptSource.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

namespace {

std::string_view WithoutIndentation(std::string_view line)
{
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

}  // namespace

std::optional<std::string> nxScriptSource::Add(const std::string& path)
{
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) return path + ": is a directory, not a Lua script";
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        return path + (std::filesystem::exists(path, code) ? ": cannot be read" : ": no such file");
    }
    File file{path, {}, _lineCount + 1};
    for (std::string line; std::getline(stream, line);) {
        if (line.find('\0') != std::string::npos)
            return path + ":" + std::to_string(file.lines.size() + 1) +
                   ": holds a zero byte, so it is no Lua source text";
        if (line.ends_with('\r')) line.pop_back();
        // Lua skips such a first line of a file, but not of a text.
        if (file.lines.empty() && line.starts_with('#')) line.clear();
        file.lines.push_back(std::move(line));
    }
    for (const std::string& line : file.lines) _text += line + '\n';
    _lineCount += static_cast<unsigned int>(file.lines.size());
    _files.push_back(std::move(file));
    return std::nullopt;
}

nxScriptHelper nxScriptSource::GetHelper() const
{
    nxScriptHelper helper;
    // Beyond the last line, so that every line is told by the file that holds it.
    helper.lineOffset = std::numeric_limits<unsigned int>::max();
    for (const File& file : _files) {
        const auto count = static_cast<unsigned int>(file.lines.size());
        helper.modules.push_back({file.path, file.firstLine, file.firstLine + std::max(count, 1u) - 1});
    }
    // An error at the end of the text, such as a missing end, is told one line behind the last.
    if (!helper.modules.empty()) ++helper.modules.back().lastLine;
    return helper;
}

nxScriptSource::Failure nxScriptSource::Explain(const std::string& errorText) const
{
    // [string "..."]:LINE:FILE: message
    for (const File& file : _files) {
        const std::string tail = ":" + file.path + ":";
        const std::size_t name = errorText.find(tail);
        if (name == std::string::npos || !errorText.starts_with('[')) continue;
        const std::size_t digits = errorText.rfind(':', name - 1) + 1;
        unsigned int line = 0;
        const char* end = errorText.data() + name;
        if (std::from_chars(errorText.data() + digits, end, line).ptr != end || line == 0) continue;
        Location location{file.path, line, {}};
        if (line <= file.lines.size()) location.text = WithoutIndentation(file.lines[line - 1]);
        return {file.path + ":" + std::to_string(line) + ":" + errorText.substr(name + tail.size()), location};
    }
    return {errorText, std::nullopt};
}
