#pragma once

#include <functional>
#include <string>
#include <toml.hpp>
#include <utility>
#include <vector>

#include "host/feed/nxFeedError.h"

// Reading of a TOML file whose every fault is told by file, line, column and reason. For sources, not for
// headers: what it includes is large.
class nxTomlFile
{
public:
    using Entries = std::vector<std::pair<std::string, const toml::value*>>;

    explicit nxTomlFile(const std::string& path) : _path(path) {}

    // Hands the parsed file to `read`, which takes it apart and calls Refuse for what is wrong. False:
    // `error` tells why. `content` is what the file should hold, for the message about a folder.
    [[nodiscard]] bool Read(const char* content, const std::function<void(const toml::value&)>& read,
                            nxFeedError& error) const;

    // These leave `read`.
    [[noreturn]] void Refuse(const toml::value& at, const std::string& reason) const;
    [[noreturn]] void RefuseKey(const toml::value& at, const std::string& key,
                                const std::string& known) const;

    // The keys of a table in the order of the file, so that the first fault is the one told. What is no
    // table is refused with that complaint.
    Entries GetEntries(const toml::value& table, const std::string& complaint) const;
    // The text of a key; what is none, or empty, is refused.
    const std::string& GetText(const toml::value& value, const std::string& key) const;
    // The text of a text, of true and false, and of a finite number, which keeps its point: 2.0 is no
    // integer. What is something else is refused with that complaint.
    std::string GetScalarText(const toml::value& value, const std::string& complaint) const;

private:
    const std::string& _path;
};
