#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

// What `algoserver report` makes of the file of a sweep's results.
struct SweepReport
{
    std::string page, json, csv;     // files to write; empty: not wanted
    std::optional<std::size_t> run;  // of a point: its own page or result, by running it again
    std::size_t pages = 0;           // so many of the best have pages of their own beside the sweep's

    static bool IsSweep(const std::string& path);
    bool IsOfSweep() const { return !csv.empty() || run || pages != 0; }
    void AddOptions(CLI::App& command);
    // Gives the exit status.
    int Write(const std::string& file) const;

private:
    std::optional<std::string> _FindObstacle(const std::string& file) const;
};
