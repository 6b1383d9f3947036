#include "host/run/nxRunArguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "host/exchange/nxLatencyFile.h"
#include "host/feed/nxDataSet.h"
#include "host/feed/nxFeedTime.h"
#include "host/jobs/nxDataStores.h"
#include "host/market/nxProductFile.h"
#include "host/run/nxAdjustmentFile.h"
#include "host/run/nxParameterEvents.h"
#include "host/run/nxParameterFile.h"
#include "host/run/nxParameterText.h"
#include "host/run/nxRunFiles.h"

std::optional<std::string> nxJobArguments::MakeJobs(std::vector<nxJobOptions>& jobs) const
{
    if (const auto error = _NameJobs(jobs)) return error;
    return _SetParameters(jobs);
}

std::optional<std::string> nxRunArguments::Apply(nxRunOptions& options) const
{
    nxDataFiles files;
    for (const std::string& name : options.data)
        if (auto fault = files.Add(name)) return fault;
    options.data = files.paths;
    options.lotSizes = files.lotSizes;
    options.barPeriods = files.barPeriods;
    if (const auto error = _FindObstacle(options)) return error;
    nxFeedError error;
    if (!options.productFile.empty() &&
        !nxProductFile::Read(options.productFile, options.products, error, &options.namedBars))
        return error.GetText();
    if (const auto fault = MakeJobs(options.jobs)) return fault;
    for (nxJobOptions& job : options.jobs)
        job.account = account;
    if (const auto fault = nxSetBarPeriods(barPeriods, options.barPeriods)) return fault;
    if (const auto fault = form.Apply(options.form)) return fault;
    if (const auto fault = _SetSpan(options)) return fault;
    if (const auto fault = _SetLatencies(options)) return fault;
    if (const auto fault = _SetSelections(options.jobs)) return fault;
    if (const auto fault = _AddAdjustments(options)) return fault;
    return _AddChanges(options);
}

std::vector<std::string> nxRunArguments::GetInputs(const nxRunOptions& options) const
{
    std::vector<std::string> inputs;
    for (const auto* paths :
         {&scripts, &options.modules, &options.data, &parameterFiles, &eventFiles, &adjustmentFiles})
        inputs.insert(inputs.end(), paths->begin(), paths->end());
    if (!options.productFile.empty()) inputs.push_back(options.productFile);
    for (const auto& text : {latency, answerLatency})
        if (text && nxLatencyFile::IsNamedBy(*text)) inputs.push_back(*text);
    return inputs;
}

std::vector<std::pair<const char*, std::string>> nxRunArguments::GetOutputs(const nxRunOptions& options)
{
    std::vector<std::pair<const char*, std::string>> outputs = {
        {"--record", options.recordFile}, {"--json", options.jsonFile},
        {"--report", options.reportFile}, {"--trades", options.tradesFile},
        {"--equity", options.equityFile}, {"--profile", options.profileFile}};
    std::erase_if(outputs, [](const auto& output) { return output.second.empty(); });
    return outputs;
}

std::optional<std::string> nxRunArguments::_FindObstacle(const nxRunOptions& options) const
{
    if (options.watchProducts && options.productFile.empty())
        return "--watch-products is for the file of --products";
    if (options.watchProducts && !nxRunFiles::CanBeReadAgain(options.productFile))
        return "--watch-products: " + options.productFile + " can be read only once";
    if (options.storeEvery > 0.0 && options.storeDirectory.empty())
        return "--store-every is for the stores of --store";
    nxRunFiles files;
    files.AddInputs(GetInputs(options));
    const char* standard = nullptr;  // whose file standard output is
    for (const auto& [option, path] : GetOutputs(options)) {
        if (path == "-" && standard != nullptr)
            return fmt::format("standard output can be for {} or for {}, not for both", standard, option);
        if (path == "-") standard = option;
        files.AddOutput(option, path);
    }
    if (!options.storeDirectory.empty())
        for (const std::string& path : nxDataStores::GetFiles(options.storeDirectory))
            files.AddOutput("--store", path);
    return files.FindClash();
}

std::optional<std::string> nxJobArguments::_NameJobs(std::vector<nxJobOptions>& jobs) const
{
    if (names.size() > scripts.size())
        return "--name " + names[scripts.size()] + ": there are more names than scripts";
    for (std::size_t i = 0; i < scripts.size(); ++i) {
        nxJobOptions& job = jobs.emplace_back();
        job.script = scripts[i];
        job.name = i < names.size() ? names[i] : std::filesystem::path(scripts[i]).stem().string();
        if (job.name.empty() || job.name.find('/') != std::string::npos)
            return "\"" + job.name + "\" is no name for " + job.script + ": it is empty or holds a /";
        const auto first = std::ranges::find(jobs, job.name, &nxJobOptions::name);
        if (&*first != &job && !mayShareNames)
            return "two jobs are named \"" + job.name + "\": " + first->script + " and " + job.script +
                   "; name them by --name";
    }
    return std::nullopt;
}

std::optional<std::string> nxJobArguments::_SetParameters(std::vector<nxJobOptions>& jobs) const
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

std::optional<std::string> nxRunArguments::_SetSpan(nxRunOptions& options) const
{
    nxTimeText reader;
    reader.zone = options.form.zone;
    const std::tuple<const char*, const std::string&, std::optional<long long>&> rows[] = {
        {"--from", from, options.from}, {"--to", to, options.to}};
    for (const auto& [option, text, time] : rows) {
        if (text.empty()) continue;
        if (const char* const reason = reader.Read(text, time.emplace()))
            return fmt::format("{} {}: {}; it is written as 2024-08-09 or \"2024-08-09 12:30\"", option, text,
                               reason);
    }
    if (options.from && options.to && *options.to <= *options.from)
        return "--to " + to + " is not after --from " + from;
    if (warmup.empty()) return std::nullopt;
    if (!nxFeedTime::SetPeriodFromText(warmup, options.warmup))
        return "--warmup " + warmup + ": is no length of time such as 30d, 4h or 15m";
    if (!options.from && !mayBeginLater) return "--warmup is for a run with --from";
    return std::nullopt;
}

std::optional<std::string> nxRunArguments::_SetLatencies(nxRunOptions& options) const
{
    nxExchangeOptions& exchange = options.exchange;
    nxFeedError error;
    const struct
    {
        const char* option;
        const std::optional<std::string>& text;
        nxLatency *request, *answer;
    } rows[] = {{"--latency", latency, &exchange.request, &exchange.answer},
                {"--answer-latency", answerLatency, nullptr, &exchange.answer}};
    for (const auto& [option, text, request, answer] : rows) {
        if (!text) continue;
        if (!nxLatencyFile::IsNamedBy(*text)) {
            if (!answer->SetFromText(*text))
                return fmt::format("{}: {} is no DURATION such as 5ms, MIN..MAX or FILE.csv", option, *text);
            if (request != nullptr) *request = *answer;
        } else if (!nxLatencyFile::Read(*text, request, answer, error)) {
            return error.GetText();
        }
    }
    if (feedLatency && !options.feedLatency.SetFromText(*feedLatency))
        return fmt::format("--feed-latency: {} is no DURATION such as 5ms or MIN..MAX", *feedLatency);
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

std::optional<std::string> nxRunArguments::_AddAdjustments(nxRunOptions& options) const
{
    nxFeedError error;
    for (const std::string& file : adjustmentFiles)
        if (!nxAdjustmentFile::Read(file, options.adjustments, error)) return error.GetText();
    std::ranges::stable_sort(options.adjustments, {}, &nxAdjustment::time);
    return std::nullopt;
}

std::optional<std::string> nxRunArguments::_AddChanges(nxRunOptions& options) const
{
    nxParameterEvents events(options.jobs);
    for (const std::string& file : eventFiles)
        if (!events.AddFile(file)) return events.GetError().GetText();
    for (const auto& [time, text] : changes)
        if (!events.Add(time, text)) return events.GetError().GetText();
    if (!events.Finish(options.changes)) return events.GetError().GetText();
    return std::nullopt;
}
