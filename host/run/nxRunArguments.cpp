#include "host/run/nxRunArguments.h"

#include <algorithm>
#include <filesystem>

#include "host/run/nxParameterEvents.h"
#include "host/run/nxParameterFile.h"
#include "host/run/nxParameterText.h"

std::optional<std::string> nxRunArguments::Apply(nxRunOptions& options) const
{
    if (const auto error = _MakeJobs(options.jobs)) return error;
    if (const auto error = _SetParameters(options.jobs)) return error;
    if (const auto error = _SetSelections(options.jobs)) return error;
    return _AddChanges(options);
}

std::optional<std::string> nxRunArguments::_MakeJobs(std::vector<nxJobOptions>& jobs) const
{
    if (names.size() > scripts.size())
        return "--name " + names[scripts.size()] + ": there are more names than scripts";
    for (std::size_t i = 0; i < scripts.size(); ++i) {
        nxJobOptions& job = jobs.emplace_back();
        job.script = scripts[i];
        job.name = i < names.size() ? names[i] : std::filesystem::path(scripts[i]).stem().string();
        job.account = account;
        if (job.name.empty() || job.name.find('/') != std::string::npos)
            return "\"" + job.name + "\" is no name for " + job.script + ": it is empty or holds a /";
        const auto first = std::ranges::find(jobs, job.name, &nxJobOptions::name);
        if (&*first != &job)
            return "two jobs are named \"" + job.name + "\": " + first->script + " and " + job.script +
                   "; name them by --name";
    }
    return std::nullopt;
}

std::optional<std::string> nxRunArguments::_SetParameters(std::vector<nxJobOptions>& jobs) const
{
    nxFeedError error;
    for (const std::string& file : parameterFiles)
        if (!nxParameterFile::Read(file, jobs, error)) return error.GetText();
    for (const bool isOfOneJob : {false, true}) {
        for (const std::string& text : parameters) {
            const std::string place = "--param " + text + ": ";
            nxParameterText parameter;
            if (const auto reason = parameter.SetFromText(text, jobs)) return place + *reason;
            if (parameter.name.job.has_value() != isOfOneJob) continue;
            for (std::size_t i = 0; i < jobs.size(); ++i) {
                if (i != parameter.name.job.value_or(i)) continue;
                if (const auto reason =
                        jobs[i].parameters.Define(parameter.name.name, parameter.type, parameter.value))
                    return place + *reason;
            }
        }
    }
    return std::nullopt;
}

std::optional<std::string> nxRunArguments::_SetSelections(std::vector<nxJobOptions>& jobs) const
{
    for (const bool isOfOneJob : {false, true}) {
        for (const std::string& text : selections) {
            const std::string place = "--select " + text + ": ";
            // A slash behind the first sign of equality belongs to a value.
            const bool namesJob = text.substr(0, text.find('=')).find('/') != std::string::npos;
            if (namesJob != isOfOneJob) continue;
            nxParameterName name{std::nullopt, text};
            if (namesJob)
                if (const auto reason = name.SetFromText(text, jobs)) return place + *reason;
            nxJobSelection selection;
            if (const auto reason = selection.SetFromText(name.name)) return place + *reason;
            for (std::size_t i = 0; i < jobs.size(); ++i)
                if (i == name.job.value_or(i)) jobs[i].selection = selection;
        }
    }
    return std::nullopt;
}

std::optional<std::string> nxRunArguments::_AddChanges(nxRunOptions& options) const
{
    if (std::ranges::count(eventFiles, "-") + std::ranges::count(options.data, "-") > 1)
        return "-: standard input can be read only once";
    nxParameterEvents events(options.jobs);
    for (const std::string& file : eventFiles)
        if (!events.AddFile(file)) return events.GetError().GetText();
    for (const auto& [time, text] : changes)
        if (!events.Add(time, text)) return events.GetError().GetText();
    if (!events.Finish(options.changes)) return events.GetError().GetText();
    return std::nullopt;
}
