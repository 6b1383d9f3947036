#pragma once

#include <cstdio>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

// The record of a run: what left the scripts, one JSON object a line, in order. Written as it goes through a
// buffer; whole once Close() has succeeded. Bytes that are no UTF-8 are replaced by U+FFFD. Used on the
// replay's thread.
class nxRunRecord
{
public:
    struct Field
    {
        const char* name;
        // A null map is JSON's null; so is a number that is not finite.
        std::variant<std::string_view, double, unsigned int, long long, unsigned long long, bool,
                     const std::map<std::string, std::string>*>
            value;
    };
    using Fields = std::initializer_list<Field>;

    // Empties a file that exists. "-" is standard output, which is the record's alone from then on: whatever
    // else the process prints to it goes to standard error. Null, or why not: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Open(const std::string& path);
    bool IsOpen() const { return _file != nullptr; }
    // Behind "sequence", which counts from 1, come time (none: null), job and type, then the fields.
    void Write(const std::optional<std::string>& time, const std::string& job, const char* type,
               Fields fields);
    // What was written so far could not be, as far as is known.
    bool HasFailed() const { return _failure.has_value(); }
    // Null, or why the record is not whole: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Close();

private:
    struct Closer
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void _NoteFailure();

    std::string _path;
    std::unique_ptr<std::FILE, Closer> _file;
    unsigned long long _sequence = 0;
    std::optional<std::string> _failure;
};
