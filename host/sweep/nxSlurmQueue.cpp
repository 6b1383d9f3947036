#include "host/sweep/nxSlurmQueue.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>

#include "host/sweep/nxSlurmCall.h"
#include "host/sweep/nxSlurmScripts.h"

namespace {

std::optional<unsigned int> GetNumber(std::string_view text)
{
    unsigned int number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && rest != text.data() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<std::string> nxSlurmQueue::Read(unsigned int slices, unsigned int chunk)
{
    _tasks.clear();
    std::string names = _name;
    for (unsigned int begin = 0; begin < slices; begin += chunk)
        names += fmt::format(",{}+{}", _name, begin);
    // A line each: the job's number, the task's, state, name, and why it waits.
    std::string text;
    if (auto fault = nxSlurmCall::Run(
            {"squeue", "--noheader", "--array", "--name=" + names, "--format=%F|%K|%T|%j|%r"}, text))
        return fault;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (auto fault = _AddTask(line)) return fault;
    return std::nullopt;
}

std::optional<std::string> nxSlurmQueue::_AddTask(const std::string& line)
{
    std::vector<std::string> cells(1);
    for (const char character : line) {
        if (character == '|')
            cells.emplace_back();
        else
            cells.back() += character;
    }
    if (cells.size() != 5) return fmt::format("squeue gives a line that is not understood: {}", line);
    const std::string &state = cells[2], &name = cells[3];
    Task task{cells[0]};
    if (name != _name) {
        const auto begin = GetNumber(std::string_view(name).substr(_name.size() + 1)),
                   index = GetNumber(cells[1]);
        if (!begin || !index) return fmt::format("squeue gives a line that is not understood: {}", line);
        task.slice = *begin + *index;
    }
    // What is starting, ending or suspended has begun.
    task.isRunning =
        state != "PENDING" && state != "REQUEUED" && state != "REQUEUE_HOLD" && state != "SPECIAL_EXIT";
    if (!task.isRunning) task.reason = cells[4] == "None" ? "" : cells[4];
    _tasks.push_back(std::move(task));
    return std::nullopt;
}

const nxSlurmQueue::Task* nxSlurmQueue::GetMerge() const
{
    const auto found =
        std::find_if(_tasks.begin(), _tasks.end(), [](const Task& task) { return !task.slice; });
    return found == _tasks.end() ? nullptr : &*found;
}

std::vector<std::string> nxSlurmQueue::GetArrays() const
{
    std::vector<std::string> jobs;
    for (const Task& task : _tasks)
        if (task.slice && std::find(jobs.begin(), jobs.end(), task.job) == jobs.end())
            jobs.push_back(task.job);
    return jobs;
}

std::optional<std::string> nxSlurmQueue::ReadMaxArraySize(unsigned int& size)
{
    std::string text;
    if (auto fault = nxSlurmCall::Run({"scontrol", "show", "config"}, text)) return fault;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("MaxArraySize")) continue;
        const std::size_t at = line.find_first_of("0123456789");
        const auto number =
            at == std::string::npos ? std::nullopt : GetNumber(std::string_view(line).substr(at));
        if (!number || *number < 2)
            return "this cluster takes no job arrays: its MaxArraySize is below 2; its administrator can set "
                   "it";
        size = *number;
        return std::nullopt;
    }
    return "scontrol show config tells no MaxArraySize";
}

// A name in which % begins a pattern.
std::string nxSlurmQueue::_GetOutput(const std::string& name) const
{
    std::string path;
    for (const char character : _folder.GetPath())
        path += character == '%' ? "%%" : std::string(1, character);
    return "--output=" + path + "/" + name;
}

std::optional<std::string> nxSlurmQueue::_Submit(std::vector<std::string> own,
                                                 const std::vector<std::string>& options,
                                                 const std::vector<std::string>& script,
                                                 std::string& job) const
{
    own.insert(own.begin(), {"sbatch", "--parsable", "--requeue", "--open-mode=append"});
    own.insert(own.end(), options.begin(), options.end());
    own.insert(own.end(), script.begin(), script.end());
    if (auto fault = nxSlurmCall::Run(own, job)) return fault;
    job = job.substr(0, job.find(';'));  // "17;cluster"
    return GetNumber(job) ? std::nullopt : std::optional("sbatch gives no number of a job: " + job);
}

std::optional<std::string> nxSlurmQueue::SubmitArray(unsigned int begin, const std::string& tasks,
                                                     const std::vector<std::string>& options,
                                                     std::string& job) const
{
    const std::string first = std::to_string(begin);
    return _Submit({"--array=" + tasks, "--job-name=" + _name + "+" + first, nxSlurmScripts::TimeSignal,
                    _GetOutput(nxSlurmFolder::GetLogName(begin, "%a"))},
                   options, {_folder.GetFile("task.sh").string(), first}, job);
}

std::optional<std::string> nxSlurmQueue::SubmitMerge(const std::vector<std::string>& after,
                                                     const std::vector<std::string>& options,
                                                     std::string& job) const
{
    std::vector<std::string> own = {"--job-name=" + _name, _GetOutput("merge.log")};
    if (!after.empty()) own.push_back(fmt::format("--dependency=afterany:{}", fmt::join(after, ":")));
    return _Submit(std::move(own), options, {_folder.GetFile("merge.sh").string()}, job);
}

std::optional<std::string> nxSlurmQueue::Cancel(const std::vector<std::string>& jobs)
{
    std::vector<std::string> arguments = {"scancel"};
    arguments.insert(arguments.end(), jobs.begin(), jobs.end());
    std::string output;
    return jobs.empty() ? std::nullopt : nxSlurmCall::Run(arguments, output);
}
