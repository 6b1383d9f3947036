#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/feed/nxFeedError.h"

// Compiled in nxTomlParser.cpp, and reading numbers by from_chars: the library as it comes takes a stream for
// each, a quarter of its time. Some faulty texts break what it asserts before it refuses them, so an
// assertion may neither end the program nor, as without debugging, be what the compiler relies on.
#define TOML_HEADER_ONLY 0
#define TOML_FLOAT_CHARCONV 1
#define TOML_ASSERT(expression) static_cast<void>(0)
#pragma push_macro("NDEBUG")
#undef NDEBUG
#include <toml++/toml.h>
#pragma pop_macro("NDEBUG")

// Reading of a TOML file whose every fault is told by file, line, column and reason. For sources, not for
// headers: what it includes is large.
class nxTomlFile
{
public:
    using Entries = std::vector<std::pair<std::string, const toml::node*>>;

    explicit nxTomlFile(const std::string& path) : _path(path) {}

    // Hands the parsed file to `read`, which takes it apart and calls Refuse for what is wrong. False:
    // `error` tells why. `content` is what the file should hold, for the message about a folder.
    [[nodiscard]] bool Read(const char* content, const std::function<void(const toml::node&)>& read,
                            nxFeedError& error) const;

    // These leave `read`.
    [[noreturn]] void Refuse(const toml::node& at, const std::string& reason) const;
    [[noreturn]] void RefuseKey(const toml::node& at, const std::string& key, const std::string& known) const;

    // What a table has under a key, or null.
    static const toml::node* Find(const toml::node& table, std::string_view key);
    // The keys of a table in the order of the file, so that the first fault is the one told. What is no
    // table is refused with that complaint.
    Entries GetEntries(const toml::node& table, const std::string& complaint) const;
    // The text of a key; what is none, or empty, is refused.
    const std::string& GetText(const toml::node& value, const std::string& key) const;
    // The text of a text, of true and false, and of a finite number, which keeps its point: 2.0 is no
    // integer. What is something else is refused with that complaint.
    std::string GetScalarText(const toml::node& value, const std::string& complaint) const;

private:
    const std::string& _path;
};
