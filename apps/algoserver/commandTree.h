#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// The commands of the program with their options, as --help tells them: what manual pages and completions are
// made of, so that no list repeats them.
struct CommandTree
{
    // What completes a value.
    enum class Values { None, Any, Choices, Files, LuaFiles, Folders, Parameters };

    struct Option
    {
        std::vector<std::string> names;  // as written, the short one first; of a positional its name
        std::string heading;             // of --help
        std::string about;
        std::string value;  // "FILE.csv", "queue|cross|touch [queue]"; empty: it takes none
        Values values = Values::None;
        std::vector<std::string> choices;
    };

    static CommandTree Read(const CLI::App& app);

    std::vector<std::string> path;  // "algoserver", "sweep", "status"
    std::string about;
    std::string usage;  // without "Usage: "
    std::string footer;
    std::vector<Option> options;
    std::vector<Option> positionals;
    std::vector<CommandTree> commands;  // without hidden ones

    const std::string& GetName() const { return path.back(); }
    // "algoserver-sweep-status"
    std::string Join(const char* separator) const;
};
