#include "host/feed/nxTomlFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxInputStream.h"

namespace {

// How a wrong file is told from within the reading; never leaves this file.
struct Refusal
{
    nxFeedError error;
};

// Each part makes a table within the last one, and the parser takes tables apart by recursion. Values within
// values it counts itself, up to 256.
constexpr std::size_t MostKeyParts = 16;

// How far the text in quotes reaches that begins there. Before its last three quotes a long one may have two
// more; a short one ends with its line.
std::size_t GetEndOfText(std::string_view text, std::size_t begin)
{
    const char quote = text[begin];
    const bool isLong = text.substr(begin, 3) == std::string(3, quote);
    const std::string_view mark = text.substr(begin, isLong ? 3 : 1);
    std::size_t end = begin + mark.size();
    while (end < text.size() && !text.substr(end).starts_with(mark) && (isLong || text[end] != '\n'))
        end += quote == '"' && text[end] == '\\' ? 2 : 1;
    end += mark.size();
    while (isLong && end < text.size() && text[end] == quote)
        ++end;
    return std::min(end, text.size());
}

// Where a key has too many parts; npos: nowhere.
std::size_t FindLongKey(std::string_view text)
{
    std::size_t dots = 0;
    for (std::size_t i = 0; i < text.size();) {
        switch (text[i]) {
            case '"':
            case '\'':
                i = GetEndOfText(text, i);
                continue;
            case '#':
                i = std::min(text.find('\n', i), text.size());
                continue;
            case '.':
                if (++dots == MostKeyParts) return i;
                break;
            case ',':
            case '=':
            case '[':
            case ']':
            case '{':
            case '}':
            case '\n':
                dots = 0;
        }
        ++i;
    }
    return std::string_view::npos;
}

toml::source_position GetPosition(std::string_view text, std::size_t place)
{
    text = text.substr(0, place);
    const auto lines = std::ranges::count(text, '\n');
    text.remove_prefix(text.rfind('\n') + 1);  // in the first line by none
    const auto characters = std::ranges::count_if(text, [](char c) { return (c & 0xc0) != 0x80; });
    return {static_cast<toml::source_index>(lines + 1), static_cast<toml::source_index>(characters + 1)};
}

// The parser tells what it was reading after some words that say no more than that it was reading.
std::string GetReason(std::string_view report)
{
    constexpr std::string_view opening = "Error while parsing ";
    if (report.starts_with(opening)) report.remove_prefix(opening.size());
    return std::string(report);
}

}  // namespace

bool nxTomlFile::Read(const char* content, const std::function<void(const toml::node&)>& read,
                      nxFeedError& error) const
{
    std::string text;
    if (const auto failure = nxInputStream::ReadWhole(_path, content, text)) {
        error = {_path, 0, 0, *failure};
        return false;
    }
    if (const std::size_t place = FindLongKey(text); place != text.npos) {
        const toml::source_position position = GetPosition(text, place);
        error = {_path, position.line, position.column,
                 fmt::format("a key of more than {} parts", MostKeyParts)};
        return false;
    }
    try {
        read(toml::parse(text));
        return true;
    } catch (const Refusal& refusal) {
        error = refusal.error;
    } catch (const toml::parse_error& failure) {
        const toml::source_position place = failure.source().begin;
        error = {_path, place.line, place.column, GetReason(failure.description())};
    }
    return false;
}

void nxTomlFile::Refuse(const toml::node& at, const std::string& reason) const
{
    const toml::source_position place = at.source().begin;
    throw Refusal{{_path, place.line, place.column, reason}};
}

void nxTomlFile::RefuseKey(const toml::node& at, const std::string& key, const std::string& known) const
{
    Refuse(at, "unknown key \"" + key + "\"; known are " + known);
}

const toml::node* nxTomlFile::Find(const toml::node& table, std::string_view key)
{
    return table.as_table()->get(key);
}

nxTomlFile::Entries nxTomlFile::GetEntries(const toml::node& table, const std::string& complaint) const
{
    if (!table.is_table()) Refuse(table, complaint);
    Entries entries;
    entries.reserve(table.as_table()->size());
    for (const auto& [key, value] : *table.as_table())
        entries.emplace_back(key.str(), &value);
    std::ranges::sort(entries, {}, [](const auto& entry) { return entry.second->source().begin; });
    return entries;
}

const std::string& nxTomlFile::GetText(const toml::node& value, const std::string& key) const
{
    if (!value.is_string() || value.as_string()->get().empty())
        Refuse(value, key + " is not a text in quotes");
    return value.as_string()->get();
}

std::string nxTomlFile::GetScalarText(const toml::node& value, const std::string& complaint) const
{
    if (value.is_string()) return value.as_string()->get();
    if (value.is_boolean()) return *value.as_boolean() ? "true" : "false";
    if (value.is_integer())
        return nxStringHelper::GetAsString(static_cast<long long>(value.as_integer()->get()));
    if (value.is_floating_point() && std::isfinite(value.as_floating_point()->get())) {
        const std::string text = nxStringHelper::GetAsString(value.as_floating_point()->get());
        return text.find_first_of(".e") == text.npos ? text + ".0" : text;
    }
    Refuse(value, complaint);
}
