#include "host/run/nxParameterFile.h"

#include <algorithm>

#include "host/feed/nxTomlFile.h"

namespace {

class Reader : public nxTomlFile
{
public:
    Reader(const std::string& path, std::vector<nxJobOptions>& jobs) : nxTomlFile(path), _jobs(jobs) {}

    // What is for all jobs comes first, so that a job's own goes before it wherever it stands.
    void ReadAll(const toml::node& root) const
    {
        for (const char* wanted : {"parameters", "jobs"}) {
            for (const auto& [key, value] : _GetEntries(root, "the file")) {
                if (key != "parameters" && key != "jobs") RefuseKey(*value, key, "parameters, jobs");
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
    Entries _GetEntries(const toml::node& table, const std::string& name) const
    {
        return GetEntries(table, name + " is no table");
    }

    void _ReadJobs(const toml::node& table) const
    {
        for (const auto& [name, value] : _GetEntries(table, "jobs")) {
            const auto job = std::ranges::find(_jobs, name, &nxJobOptions::name);
            if (job == _jobs.end()) Refuse(*value, "no job named \"" + name + "\" in this run");
            _ReadParameters(*value, "jobs." + name, job->parameters);
        }
    }

    void _ReadParameters(const toml::node& table, const std::string& tableName,
                         nxParameterSet& parameters) const
    {
        for (const auto& [name, value] : _GetEntries(table, tableName)) {
            std::string type;
            const toml::node* plain = value;
            if (value->is_table()) {
                plain = nullptr;
                for (const auto& [key, part] : _GetEntries(*value, name)) {
                    if (key == "value") {
                        plain = part;
                    } else if (key == "type") {
                        type = part->is_string() ? part->as_string()->get() : std::string();
                        if (!nxParameterSet::IsTypeName(type))
                            Refuse(*part, "unknown type \"" + type + "\" of parameter " + name +
                                              "; known are " + nxParameterSet::TypeNames);
                    } else {
                        Refuse(*part, "unknown key \"" + key + "\" of parameter " + name +
                                          "; known are type, value");
                    }
                }
                if (plain == nullptr) Refuse(*value, "parameter " + name + " has no value");
            }
            // A text in quotes is meant as text, whatever it looks like.
            if (type.empty() && plain->is_string()) type = "text";
            const std::string text = GetScalarText(
                *plain, "parameter " + name + " is neither a text, a finite number, true nor false");
            if (type.empty() && plain->is_floating_point() && text.find('e') != text.npos) type = "double";
            if (const auto reason = parameters.Define(name, type, text)) Refuse(*plain, *reason);
        }
    }

    std::vector<nxJobOptions>& _jobs;
};

}  // namespace

bool nxParameterFile::Read(const std::string& path, std::vector<nxJobOptions>& jobs, nxFeedError& error)
{
    const Reader reader(path, jobs);
    return reader.Read(
        "file of parameters", [&](const toml::node& root) { reader.ReadAll(root); }, error);
}
