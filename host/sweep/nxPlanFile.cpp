#include "host/sweep/nxPlanFile.h"

#include "host/feed/nxTomlFile.h"

namespace {

class Reader : public nxTomlFile
{
public:
    Reader(const std::string& path, std::vector<nxPlanEntry>& entries)
        : nxTomlFile(path), _path(path), _entries(entries)
    {
    }

    void ReadAll(const toml::node& root) const
    {
        for (const auto& [key, value] : GetEntries(root, "the file is no table")) {
            if (key != "parameters" && key != "options") {
                _Add(key, "", *value);
            } else {
                for (const auto& [name, values] : GetEntries(*value, key + " is no table"))
                    _Add(key, name, *values);
            }
        }
    }

private:
    void _Add(const std::string& key, const std::string& name, const toml::node& value) const
    {
        nxPlanEntry entry{key, name, {}, value.is_array(), {}};
        const toml::source_position place = value.source().begin;
        entry.place = nxFeedError{_path, place.line, place.column, {}}.GetText();
        while (!entry.place.empty() && (entry.place.back() == ' ' || entry.place.back() == ':'))
            entry.place.pop_back();
        const std::string complaint =
            (name.empty() ? key : name) +
            " is neither a text, a finite number, true nor false, nor a list of them";
        if (value.is_array()) {
            for (const toml::node& each : *value.as_array())
                entry.values.push_back(GetScalarText(each, complaint));
        } else {
            entry.values.push_back(GetScalarText(value, complaint));
        }
        _entries.push_back(std::move(entry));
    }

    const std::string& _path;
    std::vector<nxPlanEntry>& _entries;
};

}  // namespace

bool nxPlanFile::Read(const std::string& path, std::vector<nxPlanEntry>& entries, nxFeedError& error)
{
    const Reader reader(path, entries);
    return reader.Read(
        "plan of a sweep", [&](const toml::node& root) { reader.ReadAll(root); }, error);
}
