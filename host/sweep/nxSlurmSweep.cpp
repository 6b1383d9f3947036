#include "host/sweep/nxSlurmSweep.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/sweep/nxSlurmCall.h"
#include "host/sweep/nxSlurmScripts.h"

namespace {

constexpr const char* MergeDone = "merge.done";
constexpr const char* MergeFailed = "merge.failed";

// "0-3,7,9-12" of ascending numbers, each less `begin`.
std::string ListTasks(const std::vector<unsigned int>& slices, unsigned int begin)
{
    std::string text;
    for (std::size_t i = 0; i < slices.size();) {
        std::size_t last = i;
        while (last + 1 < slices.size() && slices[last + 1] == slices[last] + 1)
            ++last;
        text += fmt::format("{}{}", text.empty() ? "" : ",", slices[i] - begin);
        if (last > i) text += fmt::format("-{}", slices[last] - begin);
        i = last + 1;
    }
    return text;
}

}  // namespace

std::optional<std::string> nxSlurmSweep::_Open()
{
    std::optional<nxSlurmWork> work;
    if (auto fault = _folder.Read(work)) return fault;
    if (!work)
        return fmt::format(
            "{}: no sweep was submitted into that folder; name the one that its submission told",
            _folder.GetPath());
    _work = std::move(*work);
    return std::nullopt;
}

// What is there already, or a beginning.
std::optional<std::string> nxSlurmSweep::_Begin(nxSlurmWork& work, bool restarts)
{
    std::optional<nxSlurmWork> before;
    if (auto fault = _folder.Read(before); fault && !restarts) return fault;
    if (before && !restarts && before->GetHash() != work.GetHash())
        return fmt::format(
            "{}: another sweep was submitted into that folder, or its script, data, plan or algoserver have "
            "changed since; name another folder, or give --restart, which does all of it again",
            _folder.GetPath());
    if (before && !restarts) {
        work.slices = before->slices;
        work.chunk = before->chunk;
        work.runs = before->runs;
    }
    const nxSlurmWork& queued = before ? *before : work;
    if (auto fault = _queue.Read(queued.slices, queued.chunk)) return fault;
    if (restarts) {
        if (!_queue.GetTasks().empty())
            return fmt::format("{}: jobs of that folder wait or run; 'algoserver sweep cancel' ends them",
                               _folder.GetPath());
        _folder.RemoveAll();
        // The results with what SQLite may have left beside them.
        std::error_code failure;
        for (const char* ending : {"", "-journal", "-wal", "-shm"})
            std::filesystem::remove(work.output + ending, failure);
    }
    _work = std::move(work);
    return std::nullopt;
}

std::vector<unsigned int> nxSlurmSweep::_GetUnmade() const
{
    const auto slices = _folder.GetSlices(_work.slices);
    std::vector<bool> isQueued(_work.slices, false);
    for (const nxSlurmQueue::Task& task : _queue.GetTasks())
        if (task.slice && *task.slice < _work.slices) isQueued[*task.slice] = true;
    std::vector<unsigned int> unmade;
    for (unsigned int slice = 0; slice < _work.slices; ++slice)
        if (slices[slice] != nxSlurmFolder::Slice::Done && !isQueued[slice]) unmade.push_back(slice);
    return unmade;
}

// The slices may have been thrown away then.
bool nxSlurmSweep::_IsMerged() const
{
    std::error_code failure;
    return _folder.Has(MergeDone) && std::filesystem::exists(_work.output, failure);
}

std::optional<std::string> nxSlurmSweep::Submit(nxSlurmWork work, const nxSlurmOptions& options,
                                                bool restarts, std::ostream& out)
{
    unsigned int most = 0;
    if (auto fault = nxSlurmQueue::ReadMaxArraySize(most)) return fault;
    work.chunk = std::min(most, work.slices);
    if (auto fault = _folder.Lock("submission")) return fault;
    if (auto fault = _Begin(work, restarts)) return fault;
    if (_IsMerged()) {
        out << "all is done: the results are in " << _work.output << "\n";
        return std::nullopt;
    }
    std::string text;
    if (auto fault = _work.GetText(text)) return fault;
    for (const auto& [name, content] :
         {std::pair<const char*, std::string>("task.sh", nxSlurmScripts::MakeTask(_folder, _work)),
          {"merge.sh", nxSlurmScripts::MakeMerge(_folder, _work)},
          {"sweep.json", text}})
        if (auto fault = _folder.Write(name, content)) return fault;
    const std::vector<unsigned int> unmade = _GetUnmade();
    std::vector<std::string> jobs = _queue.GetArrays();
    const nxSlurmQueue::Task* const merge = _queue.GetMerge();
    if (unmade.empty() && merge != nullptr) {
        out << "nothing is missing: all slices are done or in the queue, and so is the merge, job "
            << merge->job << "\n";
        return std::nullopt;
    }
    if (auto fault = _SubmitSlices(unmade, options, jobs, out)) return fault;
    if (merge != nullptr)
        if (auto fault = nxSlurmQueue::Cancel({merge->job})) return fault;
    return _SubmitMerge(jobs, options, out);
}

std::optional<std::string> nxSlurmSweep::_SubmitSlices(const std::vector<unsigned int>& slices,
                                                       const nxSlurmOptions& options,
                                                       std::vector<std::string>& jobs, std::ostream& out)
{
    for (unsigned int begin = 0; begin < _work.slices; begin += _work.chunk) {
        const auto first = std::lower_bound(slices.begin(), slices.end(), begin);
        const auto end = std::lower_bound(first, slices.end(), begin + _work.chunk);
        if (first == end) continue;
        std::string tasks = ListTasks({first, end}, begin);
        out << fmt::format("slices {} of {}", ListTasks({first, end}, 0), _work.slices);
        if (options.throttle > 0) tasks += fmt::format("%{}", options.throttle);
        std::string job;
        if (auto fault = _queue.SubmitArray(begin, tasks, options.GetArguments(), job)) {
            out << " are not submitted\n";
            return *fault +
                   "; what was submitted before goes on, and the same command submits the rest when that is "
                   "mended";
        }
        out << ": job " << job << "\n";
        jobs.push_back(job);
        if (auto fault = _folder.NoteJob(job, fmt::format("slices {}+{}", begin, tasks))) return fault;
    }
    return std::nullopt;
}

std::optional<std::string> nxSlurmSweep::_SubmitMerge(const std::vector<std::string>& after,
                                                      const nxSlurmOptions& options, std::ostream& out)
{
    _folder.Remove(MergeFailed);
    std::string job;
    if (auto fault = _queue.SubmitMerge(after, options.GetArguments(), job)) return fault;
    out << "merge into " << _work.output << ": job " << job << "\n";
    return _folder.NoteJob(job, "merge");
}

std::optional<std::string> nxSlurmSweep::GetStatus(nxSlurmStatus& status, const CountRuns& count)
{
    if (auto fault = _Open()) return fault;
    status = {};
    status.folder = _folder.GetPath();
    status.output = _work.output;
    status.slices = _work.slices;
    status.runs = _work.runs;
    if (auto fault = _queue.Read(_work.slices, _work.chunk)) status.queueFault = *fault;
    _CountQueue(status);
    _CountSlices(status, count);
    return std::nullopt;
}

void nxSlurmSweep::_CountQueue(nxSlurmStatus& status) const
{
    status.jobs = _queue.GetArrays();
    for (const nxSlurmQueue::Task& task : _queue.GetTasks())
        if (task.slice && status.reason.empty()) status.reason = task.reason;
    status.merge = _IsMerged()                ? nxSlurmStatus::Merge::Done
                   : _folder.Has(MergeFailed) ? nxSlurmStatus::Merge::Failed
                                              : nxSlurmStatus::Merge::None;
    if (status.merge == nxSlurmStatus::Merge::Failed) status.mergeFault = _folder.ReadLine(MergeFailed);
    if (const nxSlurmQueue::Task* const merge = _queue.GetMerge()) {
        status.mergeJob = merge->job;
        if (status.merge != nxSlurmStatus::Merge::Done)
            status.merge = merge->isRunning ? nxSlurmStatus::Merge::Running : nxSlurmStatus::Merge::Pending;
    }
}

void nxSlurmSweep::_CountSlices(nxSlurmStatus& status, const CountRuns& count) const
{
    std::vector<const nxSlurmQueue::Task*> tasks(_work.slices, nullptr);
    for (const nxSlurmQueue::Task& task : _queue.GetTasks())
        if (task.slice && *task.slice < _work.slices) tasks[*task.slice] = &task;
    const auto slices = _folder.GetSlices(_work.slices);
    if (count) status.runsDone = 0;
    for (unsigned int slice = 0; slice < _work.slices; ++slice) {
        if (status.runsDone)
            *status.runsDone +=
                count(_folder.GetFile(nxSlurmFolder::GetSliceName(slice) + ".db")).value_or(0);
        if (slices[slice] == nxSlurmFolder::Slice::Done) {
            ++status.done;
        } else if (tasks[slice] != nullptr) {
            ++(tasks[slice]->isRunning ? status.running : status.pending);
        } else {
            ++(slices[slice] == nxSlurmFolder::Slice::Failed ? status.failed : status.lost);
            status.missing.push_back(slice);
        }
    }
    if (status.missing.empty()) return;
    const unsigned int first = status.missing.front(), begin = first / _work.chunk * _work.chunk;
    status.log = _folder.GetFile(nxSlurmFolder::GetLogName(begin, std::to_string(first - begin))).string();
    status.why = _folder.ReadLine(nxSlurmFolder::GetSliceName(first) + ".failed");
}

std::optional<std::string> nxSlurmSweep::Merge(bool finishes, int& status)
{
    if (auto fault = _Open()) return fault;
    if (auto fault = _folder.Lock("merge")) return fault;
    auto fault = _MergeSlices(finishes, status);
    _folder.Remove(fault || status != 0 ? MergeDone : MergeFailed);
    const std::string end = fault ? *fault : fmt::format("exit status {}", status);
    if (auto other = _folder.Write(fault || status != 0 ? MergeFailed : MergeDone, end + "\n"); !fault)
        fault = other;
    return fault;
}

std::optional<std::string> nxSlurmSweep::_MergeSlices(bool finishes, int& status) const
{
    const auto slices = _folder.GetSlices(_work.slices);
    std::vector<unsigned int> missing;
    std::vector<std::string> arguments = {_work.program};
    arguments.insert(arguments.end(), _work.arguments.begin(), _work.arguments.end());
    for (unsigned int slice = 0; slice < _work.slices; ++slice) {
        const std::string results = nxSlurmFolder::GetSliceName(slice) + ".db";
        if (slices[slice] != nxSlurmFolder::Slice::Done) missing.push_back(slice);
        if (_folder.Has(results))
            arguments.insert(arguments.end(), {"--take", _folder.GetFile(results).string()});
    }
    if (!missing.empty() && !finishes)
        return fmt::format(
            "{} of {} slices are missing: {}; submit with the same command again, which makes them, or give "
            "--finish, which makes "
            "them here",
            missing.size(), _work.slices, ListTasks(missing, 0));
    arguments.insert(arguments.end(), {"-o", _work.output});
    std::error_code failure;
    std::filesystem::current_path(_work.directory, failure);
    if (failure)
        return fmt::format("{}: {}; the sweep was started there, and its files are named from there",
                           _work.directory, failure.message());
    return nxSlurmCall::RunHere(arguments, status);
}

std::optional<std::string> nxSlurmSweep::Cancel(std::ostream& out)
{
    if (auto fault = _Open()) return fault;
    if (auto fault = _queue.Read(_work.slices, _work.chunk)) return fault;
    // The merge first, which would begin when the others have ended.
    std::vector<std::string> jobs = _queue.GetArrays();
    if (const nxSlurmQueue::Task* const merge = _queue.GetMerge()) jobs.insert(jobs.begin(), merge->job);
    if (jobs.empty()) {
        out << "no job of this sweep waits or runs\n";
        return std::nullopt;
    }
    if (auto fault = nxSlurmQueue::Cancel(jobs)) return fault;
    out << fmt::format(
        "cancelled: {}\nWhat is done is kept; the command that submitted the sweep goes on with it.\n",
        fmt::join(jobs, ", "));
    return std::nullopt;
}
