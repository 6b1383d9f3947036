#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/report/nxScriptFailure.h"
#include "scriptFramework/lua/nxScriptHelper.h"

// The Lua files of one job, assembled into one text: the modules in their order, the script last. Errors are
// told in the author's own files and lines.
class nxScriptSource
{
public:
    // Null, or why a file could not be read: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Add(const std::string& path);

    const std::string& GetText() const { return _text; }
    nxScriptHelper GetHelper() const;
    // Reads what the engine's error processing made of a failure with this source's helper.
    nxScriptFailure Explain(const std::string& errorText) const;

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
