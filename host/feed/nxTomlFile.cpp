#include "host/feed/nxTomlFile.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string_view>
#include <utility>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxInputStream.h"

namespace {

// How a wrong file is told from within the reading; never leaves this file.
struct Refusal
{
    nxFeedError error;
};

// The parser's report is a drawing of several lines; its first one holds the reason behind the parser's own
// names.
std::string GetReason(std::string_view report)
{
    report = report.substr(0, report.find('\n'));
    const std::size_t names = report.rfind("toml::");
    const std::size_t colon = names == report.npos ? report.npos : report.find(": ", names);
    if (colon != report.npos) report.remove_prefix(colon + 2);
    return report.empty() ? "is not TOML" : std::string(report);
}

// Where a value stands in its file. Its location() would count the lines in front of it each time, which
// takes seconds for thousands of products.
std::ptrdiff_t GetOffset(const toml::value& value)
{
    const auto* const region = dynamic_cast<const toml::detail::region*>(toml::detail::get_region(value));
    return region == nullptr ? 0 : region->first() - region->begin();
}

}  // namespace

bool nxTomlFile::Read(const char* content, const std::function<void(const toml::value&)>& read,
                      nxFeedError& error) const
{
    std::string text;
    if (const auto failure = nxInputStream::ReadWhole(_path, content, text)) {
        error = {_path, 0, 0, *failure};
        return false;
    }
    try {
        std::istringstream stream(std::move(text));  // the parser seeks, which a pipe cannot
        read(toml::parse(stream, _path));
        return true;
    } catch (const Refusal& refusal) {
        error = refusal.error;
    } catch (const toml::exception& failure) {
        const toml::source_location& place = failure.location();
        error = {_path, place.line(), static_cast<unsigned int>(place.column()), GetReason(failure.what())};
    } catch (const std::bad_alloc&) {
        throw;  // says nothing about the file
    } catch (const std::exception& failure) {
        error = {_path, 0, 0, GetReason(failure.what())};
    }
    return false;
}

void nxTomlFile::Refuse(const toml::value& at, const std::string& reason) const
{
    const toml::source_location place = at.location();
    throw Refusal{{_path, place.line(), static_cast<unsigned int>(place.column()), reason}};
}

void nxTomlFile::RefuseKey(const toml::value& at, const std::string& key, const std::string& known) const
{
    Refuse(at, "unknown key \"" + key + "\"; known are " + known);
}

nxTomlFile::Entries nxTomlFile::GetEntries(const toml::value& table, const std::string& complaint) const
{
    if (!table.is_table()) Refuse(table, complaint);
    Entries entries;
    for (const auto& [key, value] : table.as_table())
        entries.emplace_back(key, &value);
    std::ranges::sort(entries, {}, [](const auto& entry) {
        return std::pair(GetOffset(*entry.second), std::string_view(entry.first));
    });
    return entries;
}

const std::string& nxTomlFile::GetText(const toml::value& value, const std::string& key) const
{
    if (!value.is_string() || value.as_string().str.empty()) Refuse(value, key + " is not a text in quotes");
    return value.as_string().str;
}

std::string nxTomlFile::GetScalarText(const toml::value& value, const std::string& complaint) const
{
    if (value.is_string()) return value.as_string().str;
    if (value.is_boolean()) return value.as_boolean() ? "true" : "false";
    if (value.is_integer()) return nxStringHelper::GetAsString(static_cast<long long>(value.as_integer()));
    if (value.is_floating() && std::isfinite(value.as_floating())) {
        const std::string text = nxStringHelper::GetAsString(value.as_floating());
        return text.find_first_of(".e") == text.npos ? text + ".0" : text;
    }
    Refuse(value, complaint);
}
