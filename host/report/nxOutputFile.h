#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// A file that a run writes, opened before the run so that it is known to be possible, written through a
// buffer and whole once Close() has succeeded. The first failure is kept. Used on the run's thread.
class nxOutputFile
{
public:
    // what: "the record", for messages.
    explicit nxOutputFile(const char* what) : _what(what) {}

    // Empties a file that exists. "-" is standard output, which is this file's alone from then on: whatever
    // else the process prints to it goes to standard error. Null, or why not: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Open(const std::string& path);
    bool IsOpen() const { return _file != nullptr; }
    void Write(std::string_view text);
    // What was written so far could not be, as far as is known.
    bool HasFailed() const { return _failure.has_value(); }
    // Null, or why the file is not whole: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Close();

private:
    struct Closer
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void _NoteFailure();

    const char* _what;
    std::string _path;
    std::unique_ptr<std::FILE, Closer> _file;
    std::optional<std::string> _failure;
};
