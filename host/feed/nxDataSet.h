#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/values/nxDecimal.h"

// A set of imported files as data.toml describes it, beside the files. A value.
struct nxDataSet
{
    static constexpr const char* FileName = "data.toml";

    struct File
    {
        std::string name;  // beside data.toml
        std::string kind;  // quotes, trades, depth or bars
        std::string product;
        unsigned long long rows = 0;
        long long first = 0, last = 0;  // nanoseconds since 1970
        long long period = 0;           // of bars, in nanoseconds; 0 where it is not known
        nxDecimal lotSize = nxDecimalOne;
        std::string sha256;  // of the file
        std::string source;  // what it was made of
    };
    std::vector<File> files;

    // The file is checked against what it tells. Null, or why not: "FILE:LINE:COLUMN: reason".
    [[nodiscard]] std::optional<std::string> Read(const std::string& path);
    [[nodiscard]] std::string GetText() const;

    // Whether it can tell this text: TOML is UTF-8.
    [[nodiscard]] static bool CanTell(std::string_view text);

    // Takes a file in the place of one of the same name.
    void Put(File file);
};

// The files that a command line names as its data: a folder stands for the data files in it, by their names;
// a pattern such as "2024*.csv" for those that match; a data.toml for the files of its set, whose contents
// are held against it.
struct nxDataFiles
{
    std::vector<std::string> paths;
    std::map<std::string, nxDecimal, std::less<>> lotSizes;    // by product, where a set tells them
    std::map<std::string, long long, std::less<>> barPeriods;  // nanoseconds

    // Null, or what is wrong.
    [[nodiscard]] std::optional<std::string> Add(const std::string& name);

private:
    std::optional<std::string> _AddFolder(const std::string& name);
    std::optional<std::string> _AddPattern(const std::string& name);
    std::optional<std::string> _AddSet(const std::string& name);
};
