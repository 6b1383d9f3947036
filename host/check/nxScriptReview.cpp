#include "host/check/nxScriptReview.h"

#include <malloc.h>

#include <algorithm>
#include <filesystem>

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

std::vector<std::string> Review(const nxScriptCheckOptions& options)
{
    nxScriptCheck check(options);
    // What cannot be read the run itself tells.
    if (!check.Run()) return {};
    std::vector<std::string> notes;
    for (const nxScriptFinding& finding : check.GetFindings())
        if (finding.code == "callback-name")
            notes.push_back(finding.file + ":" + std::to_string(finding.line) + ": " + finding.message);
    const std::size_t rest = check.GetFindings().size() - notes.size();
    if (rest == 0) return notes;
    std::string command = "algoserver check --no-run";
    for (const std::string& module : options.modules)
        command += " --module " + module;
    for (const nxJobOptions& job : options.jobs)
        command += " " + job.script;
    notes.push_back(std::to_string(rest) + (rest == 1 ? " finding" : " findings") + " in the script" +
                    (options.jobs.size() == 1 ? "" : "s") + ": " + command);
    return notes;
}

}  // namespace

nxScriptReview::nxScriptReview(const std::vector<nxJobOptions>& jobs, const std::vector<std::string>& modules)
{
    nxScriptCheckOptions options{jobs, modules, false};
    const bool isToBeRead = IsToBeRead(options);
    _notes = std::async(isToBeRead ? std::launch::async : std::launch::deferred,
                        [isToBeRead, options = std::move(options)] {
                            std::vector<std::string> notes;
                            if (!isToBeRead) return notes;
                            notes = Review(options);
                            // Some megabytes, which the run beside it need not have in its peak.
                            malloc_trim(0);
                            return notes;
                        });
}
