#pragma once

#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "host/report/nxOutputFile.h"

// The record of a run: what left the scripts, one JSON object a line, in order. Written as it goes through a
// buffer; whole once Close() has succeeded, and whole lines before. Bytes that are no UTF-8 are replaced by
// U+FFFD, numbers are written one way (see nxJsonWriter). Used on the replay's thread.
class nxRunRecord
{
public:
    // A value that is JSON already.
    struct Json
    {
        std::string_view text;
    };
    struct Field
    {
        const char* name;
        // A null map is JSON's null; so is a number that is not finite.
        std::variant<std::string_view, double, unsigned int, long long, unsigned long long, bool,
                     const std::map<std::string, std::string>*, Json>
            value;
    };
    using Fields = std::initializer_list<Field>;

    // "-" is standard output, and each piece in the buffer is a line: see nxOutputFile. Null, or why not:
    // "FILE: reason".
    [[nodiscard]] std::optional<std::string> Open(const std::string& path, nxOutputBuffer* buffer)
    {
        return _file.Open(path, buffer);
    }
    bool IsOpen() const { return _file.IsOpen(); }
    // After "sequence", which counts from 1, come time (none: null), job and type, then the fields.
    void Write(const std::optional<std::string>& time, const std::string& job, const char* type,
               std::span<const Field> fields);
    // What was written so far could not be, as far as is known.
    bool HasFailed() const { return _file.HasFailed(); }
    // Null, or why the record is not whole: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Close() { return _file.Close(); }

private:
    nxOutputFile _file{"the record", nxOutputFile::Cut::AtWrite};
    unsigned long long _sequence = 0;
};
