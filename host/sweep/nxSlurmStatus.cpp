#include "host/sweep/nxSlurmStatus.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/sweep/nxSlurmScripts.h"

namespace {

constexpr const char* MergeNames[] = {"none", "pending", "running", "done", "failed"};

const char* GetName(nxSlurmStatus::Merge merge)
{
    return MergeNames[static_cast<std::size_t>(merge)];
}

}  // namespace

std::string nxSlurmStatus::GetNext() const
{
    const std::string place = nxSlurmScripts::GetCommand({folder});
    if (merge == Merge::Done) return "the results are in " + output;
    if (IsQueued() || merge == Merge::Pending || merge == Merge::Running)
        return "wait; 'algoserver sweep cancel " + place + "' ends it and keeps what is done";
    if (!queueFault.empty()) return "ask where Slurm answers";
    if (!missing.empty())
        return fmt::format(
            "submit with the same command again, which makes the {} that {} missing; {} tells more",
            missing.size() == 1 ? "slice" : "slices", missing.size() == 1 ? "is" : "are", log);
    if (merge == Merge::Failed)
        return (std::filesystem::path(folder) / "merge.log").string() +
               " tells why the merge failed; then 'algoserver sweep merge " + place + "'";
    return "'algoserver sweep merge " + place + "' makes " + output;
}

std::string nxSlurmStatus::GetText() const
{
    std::string text = fmt::format("slices   {} of {} done", done, slices);
    const std::string waits = reason.empty() ? "pending" : "pending (" + reason + ")";
    const std::pair<unsigned int, std::string> others[] = {
        {running, "running"}, {pending, waits}, {failed, "failed"}, {lost, "lost"}};
    for (const auto& [count, name] : others)
        if (count > 0) text += fmt::format(", {} {}", count, name);
    text += "\n";
    if (runsDone && runs > 0) text += fmt::format("runs     {} of {} done\n", *runsDone, runs);
    if (!why.empty()) text += fmt::format("failed   slice {}: {}\n", missing.front(), why);
    if (!jobs.empty()) text += fmt::format("jobs     {}\n", fmt::join(jobs, ", "));
    text += fmt::format("merge    {}", GetName(merge));
    if (!mergeFault.empty()) text += ": " + mergeFault;
    if (!mergeJob.empty()) text += ", job " + mergeJob;
    text += "\n";
    if (!queueFault.empty()) text += fmt::format("queue    not known: {}\n", queueFault);
    return text + "next     " + GetNext() + "\n";
}

std::string nxSlurmStatus::GetJson() const
{
    nlohmann::ordered_json json = {
        {"directory", folder},
        {"output", output},
        {"slices",
         {{"total", slices},
          {"done", done},
          {"running", running},
          {"pending", pending},
          {"failed", failed},
          {"lost", lost}}},
        {"runs", {{"total", nullptr}, {"done", nullptr}}},
        {"missing", missing},
        {"jobs", jobs},
        {"merge", {{"state", GetName(merge)}, {"job", mergeJob}, {"failure", mergeFault}}},
        {"reason", reason},
        {"failure", why},
        {"queue", queueFault},
        {"next", GetNext()}};
    if (runs > 0) json["runs"]["total"] = runs;
    if (runsDone) json["runs"]["done"] = *runsDone;
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}
