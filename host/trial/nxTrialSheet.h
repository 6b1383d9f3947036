#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/jobs/nxScriptSource.h"

// A file of tests: its functions describe, in a Lua state of their own, what is to be run and what is
// expected of it. Each operation makes a new state, which has the strict profile and its limits.
class nxTrialSheet
{
public:
    using Json = nlohmann::json;

    // Null, or why the file cannot be read.
    [[nodiscard]] std::optional<std::string> Read(const std::string& path) { return _source.Add(path); }
    const std::string& GetPath() const { return _source.GetFiles().front().path; }

    // The names of the test functions, in the order of the file. Throws std::runtime_error with what is wrong
    // with the file, as Describe does.
    std::vector<std::string> ListTests() const;
    // What a test describes. A table of Lua is {"list": [...], "keys": {...}}.
    Json Describe(const std::string& test) const;

    // The next line from `line` on that holds the text; else `line`.
    unsigned int FindLine(unsigned int line, const std::string& text) const;

private:
    std::string _Call(const char* function, const std::string& text) const;

    nxScriptSource _source;
};
