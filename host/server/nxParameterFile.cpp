#include "host/server/nxParameterFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <toml.hpp>
#include <tuple>

#include "base/values/nxStringHelper.h"

namespace {

// How a wrong file is told from within the reading; never leaves this file.
struct Refusal
{
    nxFeedError error;
};

class Reader
{
public:
    Reader(const std::string& path, std::vector<nxJobOptions>& jobs) : _path(path), _jobs(jobs) {}

    // What is for all jobs comes first, so that a job's own goes before it wherever it stands.
    void Read(const toml::value& root) const
    {
        for (const char* wanted : {"parameters", "jobs"}) {
            for (const auto& [key, value] : _GetEntries(root, "the file")) {
                if (key != "parameters" && key != "jobs")
                    _Refuse(*value, "unknown key \"" + key + "\"; known are parameters, jobs");
                if (key != wanted) continue;
                if (key == "jobs") {
                    _ReadJobs(*value);
                } else {
                    for (nxJobOptions& job : _jobs)
                        _ReadParameters(*value, key, job.parameters);
                }
            }
        }
    }

private:
    using Entries = std::vector<std::pair<std::string, const toml::value*>>;

    [[noreturn]] void _Refuse(const toml::value& at, const std::string& reason) const
    {
        const toml::source_location place = at.location();
        throw Refusal{{_path, place.line(), static_cast<unsigned>(place.column()), reason}};
    }

    // In the order of the file, so that the first fault is the one told.
    Entries _GetEntries(const toml::value& table, const std::string& name) const
    {
        if (!table.is_table()) _Refuse(table, name + " is no table");
        Entries entries;
        for (const auto& [key, value] : table.as_table())
            entries.emplace_back(key, &value);
        std::ranges::sort(entries, {}, [](const auto& entry) {
            const toml::source_location place = entry.second->location();
            return std::make_tuple(place.line(), place.column(), entry.first);
        });
        return entries;
    }

    void _ReadJobs(const toml::value& table) const
    {
        for (const auto& [name, value] : _GetEntries(table, "jobs")) {
            const auto job = std::ranges::find(_jobs, name, &nxJobOptions::name);
            if (job == _jobs.end()) _Refuse(*value, "no job named \"" + name + "\" in this run");
            _ReadParameters(*value, "jobs." + name, job->parameters);
        }
    }

    void _ReadParameters(const toml::value& table, const std::string& tableName,
                         nxParameterSet& parameters) const
    {
        for (const auto& [name, value] : _GetEntries(table, tableName)) {
            std::string type;
            const toml::value* plain = value;
            if (value->is_table()) {
                plain = nullptr;
                for (const auto& [key, part] : _GetEntries(*value, name)) {
                    if (key == "value") {
                        plain = part;
                    } else if (key == "type") {
                        type = part->is_string() ? part->as_string().str : std::string();
                        if (!nxParameterSet::IsTypeName(type))
                            _Refuse(*part, "unknown type \"" + type + "\" of parameter " + name +
                                               "; known are " + nxParameterSet::TypeNames);
                    } else {
                        _Refuse(*part, "unknown key \"" + key + "\" of parameter " + name +
                                           "; known are type, value");
                    }
                }
                if (plain == nullptr) _Refuse(*value, "parameter " + name + " has no value");
            }
            // A text in quotes is meant as text, whatever it looks like.
            if (type.empty() && plain->is_string()) type = "text";
            const std::string text = _GetText(*plain, name);
            if (type.empty() && plain->is_floating() && text.find('e') != text.npos) type = "double";
            if (const auto reason = parameters.Define(name, type, text)) _Refuse(*plain, *reason);
        }
    }

    std::string _GetText(const toml::value& value, const std::string& name) const
    {
        if (value.is_string()) return value.as_string().str;
        if (value.is_boolean()) return value.as_boolean() ? "true" : "false";
        if (value.is_integer())
            return nxStringHelper::GetAsString(static_cast<long long>(value.as_integer()));
        if (value.is_floating() && std::isfinite(value.as_floating())) {
            const std::string text = nxStringHelper::GetAsString(value.as_floating());
            // A float stays one where its point is all that tells: 2.0 is no int.
            return text.find_first_of(".e") == text.npos ? text + ".0" : text;
        }
        _Refuse(value, "parameter " + name + " is neither a text, a finite number, true nor false");
    }

    const std::string& _path;
    std::vector<nxJobOptions>& _jobs;
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

}  // namespace

bool nxParameterFile::Read(const std::string& path, std::vector<nxJobOptions>& jobs, nxFeedError& error)
{
    try {
        std::ifstream stream(path, std::ios::binary);
        if (std::filesystem::is_directory(path))
            error = {path, 0, 0, "is a directory, not a file of parameters"};
        else if (!stream)
            error = {path, 0, 0, std::string("cannot open: ") + std::strerror(errno)};
        else {
            Reader(path, jobs).Read(toml::parse(stream, path));
            return true;
        }
    } catch (const Refusal& refusal) {
        error = refusal.error;
    } catch (const toml::exception& failure) {
        const toml::source_location& place = failure.location();
        error = {path, place.line(), static_cast<unsigned>(place.column()), GetReason(failure.what())};
    } catch (const std::exception& failure) {
        error = {path, 0, 0, GetReason(failure.what())};
    }
    return false;
}
