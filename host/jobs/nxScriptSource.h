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
    struct File
    {
        std::string path;
        std::vector<std::string> lines;
        unsigned int firstLine;  // of the assembled text
    };

    // Reads the file once; "-" is standard input. Null, or why it could not be read: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Add(const std::string& path);

    const std::vector<File>& GetFiles() const { return _files; }
    const std::string& GetText() const { return _text; }
    nxScriptHelper GetHelper() const;
    // Reads what the engine's error processing made of a failure with this source's helper.
    nxScriptFailure Explain(const std::string& errorText) const;

private:
    std::string _TellOpeningLine(std::string message, const File& file) const;

    std::vector<File> _files;
    // The engine names a text by the first characters of its first line. A comment that is longer than they
    // are keeps the script's own words, brackets and colons among them, out of its messages, tells it from
    // other texts such as the library's prelude, and moves no line.
    std::string _text = "--[[ the modules, if any, and the script as one text, whose lines count from 1 ]]";
    unsigned int _lineCount = 0;
};
