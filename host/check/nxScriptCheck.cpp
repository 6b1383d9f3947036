#include "host/check/nxScriptCheck.h"

#include <algorithm>

#include "host/check/nxDryRun.h"
#include "host/jobs/nxScriptSource.h"

namespace {

constexpr const char* SyntaxCode = "syntax";
constexpr const char* NoOnInitCode = "no-oninit";
constexpr const char* DryRunCode = "dry-run";

std::vector<nxScriptAnalysis::File> GetFiles(const nxScriptSource& source)
{
    std::vector<nxScriptAnalysis::File> files;
    for (const nxScriptSource::File& file : source.GetFiles()) {
        files.push_back({file.path, {}});
        for (const std::string& line : file.lines)
            files.back().text += line + '\n';
    }
    return files;
}

bool HasCode(const std::vector<nxScriptFinding>& findings, const char* code)
{
    return std::ranges::any_of(findings,
                               [code](const nxScriptFinding& finding) { return finding.code == code; });
}

}  // namespace

bool nxScriptCheck::Run()
{
    nxScriptAnalyzer analyzer;
    std::string error;
    if (!analyzer.Load(error)) {
        _failures.push_back(error);
        return false;
    }
    nxScriptSource modules;  // read once: one may be a pipe
    for (const std::string& path : _options.modules) {
        if (const auto failure = modules.Add(path)) {
            _failures.push_back(*failure);
            return false;
        }
    }
    for (const nxJobOptions& job : _options.jobs) {
        nxScriptSource source = _IsTest(job) ? nxScriptSource() : modules;
        if (const auto failure = source.Add(job.script))
            _failures.push_back(*failure);
        else
            _CheckJob(analyzer, source, job);
    }
    std::ranges::sort(_findings);
    const auto repeated = std::ranges::unique(_findings);
    _findings.erase(repeated.begin(), repeated.end());
    return _failures.empty();
}

bool nxScriptCheck::_IsTest(const nxJobOptions& job) const
{
    return _options.areTests || job.script.ends_with("_test.lua");
}

void nxScriptCheck::_CheckJob(nxScriptAnalyzer& analyzer, const nxScriptSource& source,
                              const nxJobOptions& job)
{
    std::vector<nxScriptFinding> findings;
    std::string error;
    if (!analyzer.Analyze(GetFiles(source), _IsTest(job), findings, error)) {
        _failures.push_back(job.script + ": " + error);
        return;
    }
    if (_options.dryRun && !_IsTest(job) && !HasCode(findings, SyntaxCode)) _TryJob(source, job, findings);
    _findings.insert(_findings.end(), findings.begin(), findings.end());
}

void nxScriptCheck::_TryJob(const nxScriptSource& source, const nxJobOptions& job,
                            std::vector<nxScriptFinding>& findings)
{
    const nxRunCall call{static_cast<std::size_t>(&job - _options.jobs.data()), nxRunCall::Part::Loading};
    nxRunPulse own;
    nxRunPulse& pulse = _options.pulse == nullptr ? own : *_options.pulse;
    pulse.call = 1ull << 32 | call.Pack();
    nxDryRun run(job.parameters, _options.profile);
    const std::optional<nxScriptFailure> failure = run.Try(source);
    pulse.call = 0;
    for (const std::string& name : run.GetAskedParameters())
        if (std::ranges::find(_parameters, name) == _parameters.end()) _parameters.push_back(name);
    // The script itself knows better than its text, which may define OnInit in ways that cannot be read.
    if (run.HasOnInit())
        std::erase_if(findings, [](const nxScriptFinding& finding) { return finding.code == NoOnInitCode; });
    else if (!failure && !HasCode(findings, NoOnInitCode))
        findings.push_back({job.script, 1, 1, 0, NoOnInitCode,
                            "the script defines no global function OnInit, so it cannot be started"});
    if (!failure) return;

    nxScriptFinding finding{job.script, 0, 0, 0, DryRunCode, failure->message};
    if (failure->location) {
        finding.file = failure->location->file;
        finding.line = failure->location->line;
        const std::string place = finding.file + ":" + std::to_string(finding.line) + ": ";
        if (finding.message.starts_with(place)) finding.message.erase(0, place.size());
    }
    // What ends the run is often what has been found on that line already.
    const auto isSamePlace = [&finding](const nxScriptFinding& other) {
        return other.file == finding.file && other.line == finding.line && other.code != NoOnInitCode;
    };
    if (finding.line != 0 && std::ranges::any_of(findings, isSamePlace)) return;
    finding.message = (run.HasOnInit() ? "OnInit fails: " : "loading fails: ") + finding.message;
    findings.push_back(std::move(finding));
}
