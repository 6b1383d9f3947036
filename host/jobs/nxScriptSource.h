#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scriptFramework/lua/nxScriptHelper.h"

// The Lua files of one job, assembled into one text: the modules in their order, the script last. Errors are
// told in the author's own files and lines.
class nxScriptSource
{
public:
    struct Location
    {
        std::string file;
        unsigned int line = 0;
        std::string text;  // the source line, without its indentation
    };
    struct Failure
    {
        // "FILE:LINE: what went wrong"; of the script's helpers that the library supplies, "prelude.lua:LINE:
        // ..."; what the engine said when no line is known.
        std::string message;
        std::optional<Location> location;
    };

    // Null, or why a file could not be read: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Add(const std::string& path);

    const std::string& GetText() const { return _text; }
    nxScriptHelper GetHelper() const;
    // Reads what the engine's error processing made of a failure with this source's helper.
    Failure Explain(const std::string& errorText) const;

private:
    struct File
    {
        std::string path;
        std::vector<std::string> lines;
        unsigned int firstLine;  // of the assembled text
    };

    std::string _TellOpeningLine(std::string message, const File& file) const;

    std::vector<File> _files;
    // The engine names a text by its first line; a bare comment there keeps the script's own words, brackets
    // and colons among them, out of its messages, and tells it from other texts such as the library's
    // prelude.
    std::string _text = "--\n";
    unsigned int _lineCount = 1;
};
