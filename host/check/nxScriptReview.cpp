#include "host/check/nxScriptReview.h"

#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "host/check/nxFindingWriter.h"
#include "host/check/nxScriptCheck.h"
#include "host/run/nxRunFiles.h"

namespace {

constexpr std::uintmax_t MostBytes = 64 * 1024;  // some 0.3 seconds

bool IsToBeRead(const nxScriptCheckOptions& options)
{
    std::uintmax_t sum = 0;
    const auto take = [&sum](const std::string& path) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        sum += error ? 0 : size;
        return nxRunFiles::CanBeReadAgain(path);
    };
    bool isReadable = std::ranges::all_of(options.modules, take);
    sum *= options.jobs.size();
    for (const nxJobOptions& job : options.jobs)
        isReadable = take(job.script) && isReadable;
    return isReadable && sum <= MostBytes;
}

// What cannot be read the run itself tells.
std::vector<nxScriptFinding> Review(const nxScriptCheckOptions& options)
{
    nxScriptCheck check(options);
    return check.Run() ? check.GetFindings() : std::vector<nxScriptFinding>();
}

}  // namespace

nxScriptReview::nxScriptReview(const std::vector<nxJobOptions>& jobs, const std::vector<std::string>& modules)
    : _command("algoserver check --no-run"), _isOfOne(jobs.size() == 1)
{
    for (const std::string& module : modules)
        _command += " --module " + module;
    for (const nxJobOptions& job : jobs)
        _command += " " + job.script;
    nxScriptCheckOptions options{.jobs = jobs, .modules = modules, .dryRun = false};
    const bool isToBeRead = IsToBeRead(options);
    _findings =
        std::async(isToBeRead ? std::launch::async : std::launch::deferred, [isToBeRead,
                                                                             options = std::move(options)] {
            std::vector<nxScriptFinding> findings;
            if (!isToBeRead) return findings;
            findings = Review(options);
            // Some megabytes, which the run beside it need not have in its peak.
            malloc_trim(0);
            return findings;
        }).share();
}

std::string nxScriptReview::_Count(std::size_t count) const
{
    return std::to_string(count) + (count == 1 ? " finding" : " findings") + " in the script" +
           (_isOfOne ? "" : "s") + ": " + _command;
}

void nxScriptReview::WriteFirst(std::ostream& out) const
{
    constexpr std::size_t most = 3;
    const std::vector<nxScriptFinding>& findings = _findings.get();
    if (findings.empty()) return;
    out << "check       " << _Count(findings.size()) << '\n';
    for (std::size_t i = 0; i < std::min(most, findings.size()); ++i) {
        out << "            ";
        nxFindingWriter::WriteLine(findings[i], out);
    }
    out.flush();
}

std::vector<std::string> nxScriptReview::GetNotes() const
{
    const std::vector<nxScriptFinding>& findings = _findings.get();
    std::vector<std::string> notes;
    for (const nxScriptFinding& finding : findings)
        if (finding.code == "callback-name")
            notes.push_back(finding.file + ":" + std::to_string(finding.line) + ": " + finding.message);
    const std::size_t rest = findings.size() - notes.size();
    if (rest > 0) notes.push_back(_Count(rest));
    return notes;
}
