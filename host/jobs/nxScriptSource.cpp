#include "host/jobs/nxScriptSource.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>
#include <string_view>

#include "host/feed/nxInputStream.h"

namespace {

// How the engine names the assembled text, and the library's own.
constexpr std::string_view TextName = "[string \"--[[ the modules, if any, and the script";
constexpr char BinaryMark = 27;  // of what luac writes
constexpr std::string_view PreludeName = "[string \"-- What every script finds ready";

std::string_view WithoutIndentation(std::string_view line)
{
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

}  // namespace

std::optional<std::string> nxScriptSource::Add(const std::string& path)
{
    std::string text;
    if (const auto failure = nxInputStream::ReadWhole(path, "Lua script", text))
        return path + ": " + *failure;
    std::istringstream stream(std::move(text));
    stream.exceptions(std::ios::badbit);  // a line without room would end the script unnoticed
    File file{path, {}, _lineCount + 1};
    for (std::string line; std::getline(stream, line);) {
        if (file.lines.empty() && line.starts_with(BinaryMark))
            return path + ": is a precompiled script; only Lua source text is run";
        if (line.find('\0') != std::string::npos)
            return path + ":" + std::to_string(file.lines.size() + 1) +
                   ": holds a zero byte, so it is no Lua source text";
        if (line.ends_with('\r')) line.pop_back();
        // Lua skips such a first line of a file, but not of a text.
        if (file.lines.empty() && line.starts_with('#')) line.clear();
        file.lines.push_back(std::move(line));
    }
    for (const std::string& line : file.lines)
        _text += line + '\n';
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
        // An empty one has no line to tell; the last one has the end of the text.
        if (count == 0 && &file != &_files.back()) continue;
        helper.modules.push_back({file.path, file.firstLine, file.firstLine + count - 1});
    }
    // An error at the end of the text, such as a missing end, is told one line behind the last.
    if (!helper.modules.empty()) ++helper.modules.back().lastLine;
    return helper;
}

// Two of the compiler's messages name a second line, where something was opened, and the engine leaves it as
// a line of the assembled text.
std::string nxScriptSource::_TellOpeningLine(std::string message, const File& file) const
{
    for (const std::string_view mark : {" expected (to close '", "function at line "}) {
        if (message.find(mark) == std::string::npos) continue;
        constexpr std::string_view words = "at line ";
        const std::size_t begin = message.find(words, message.find(mark)) + words.size();
        unsigned int line = 0;
        const char* const text = message.data();
        const auto [end, error] = std::from_chars(text + begin, text + message.size(), line);
        const auto opening = std::find_if(_files.rbegin(), _files.rend(), [line](const File& candidate) {
            return candidate.firstLine <= line;
        });
        if (error != std::errc() || opening == _files.rend()) continue;
        std::string place = std::to_string(line - opening->firstLine + 1);
        if (opening->path != file.path) place += " of " + opening->path;
        message.replace(begin, static_cast<std::size_t>(end - text) - begin, place);
        break;
    }
    return message;
}

nxScriptFailure nxScriptSource::Explain(const std::string& errorText) const
{
    // [string "NAME"]:LINE:FILE: message, with FILE where the assembled text has such a line
    const std::size_t line = errorText.find("\"]:") + 3;
    if (!errorText.starts_with("[string \"") || line < 3) return {errorText, std::nullopt};
    unsigned int number = 0;
    const char* const end = errorText.data() + errorText.size();
    const auto [rest, error] = std::from_chars(errorText.data() + line, end, number);
    if (error != std::errc() || number == 0) return {errorText, std::nullopt};

    const std::string_view tail(rest, end);
    const auto isNamed = [&](const File& file) { return tail.starts_with(":" + file.path + ":"); };
    const auto file = std::ranges::find_if(_files, isNamed);
    if (errorText.starts_with(TextName)) {
        if (file == _files.end()) return {errorText, std::nullopt};
        nxScriptFailure::Location location{file->path, number, {}};
        if (number <= file->lines.size()) location.text = WithoutIndentation(file->lines[number - 1]);
        const std::string message = _TellOpeningLine(std::string(tail.substr(file->path.size() + 1)), *file);
        return {file->path + ":" + std::to_string(number) + message, std::move(location)};
    }
    // The line is one of another text, which the engine takes for one of the assembled text all the same.
    const bool isMapped = file != _files.end();
    const std::string place = std::to_string(isMapped ? number + file->firstLine - 1 : number);
    const std::string_view message = isMapped ? tail.substr(file->path.size() + 1) : tail;
    const std::string name = errorText.starts_with(PreludeName) ? "prelude.lua:" : errorText.substr(0, line);
    return {name + place + std::string(message), std::nullopt};
}
