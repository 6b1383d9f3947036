#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxSlurmFolder.h"

// The jobs of a sweep as Slurm has them. Every operation calls a command of Slurm; null, or what went wrong,
// comes back.
class nxSlurmQueue
{
public:
    struct Task
    {
        std::string job;                         // of an array that of the whole
        std::optional<unsigned int> slice = {};  // none: the merge
        bool isRunning = false;
        std::string reason = {};  // why it waits, in Slurm's words
    };

    // `folder` outlives it. The merge bears its name, an array "+" and its first slice after that.
    explicit nxSlurmQueue(const nxSlurmFolder& folder) : _folder(folder), _name(folder.GetJobName()) {}

    // Those that wait or run. `slices` and `chunk` tell which arrays there may be.
    [[nodiscard]] std::optional<std::string> Read(unsigned int slices, unsigned int chunk);
    const std::vector<Task>& GetTasks() const { return _tasks; }
    const Task* GetMerge() const;
    // Of the tasks, each once, in the order of Slurm; the merge left out.
    std::vector<std::string> GetArrays() const;

    // One more than the highest number of a task.
    [[nodiscard]] static std::optional<std::string> ReadMaxArraySize(unsigned int& size);
    // `options` are further ones of sbatch. `job` is the new job's number.
    // `tasks`: those of the array, as sbatch takes them.
    [[nodiscard]] std::optional<std::string> SubmitArray(unsigned int begin, const std::string& tasks,
                                                         const std::vector<std::string>& options,
                                                         std::string& job) const;
    // Begins when the jobs `after` have ended, however they did.
    [[nodiscard]] std::optional<std::string> SubmitMerge(const std::vector<std::string>& after,
                                                         const std::vector<std::string>& options,
                                                         std::string& job) const;
    [[nodiscard]] static std::optional<std::string> Cancel(const std::vector<std::string>& jobs);

private:
    [[nodiscard]] std::optional<std::string> _AddTask(const std::string& line);
    std::string _GetOutput(const std::string& name) const;
    [[nodiscard]] std::optional<std::string> _Submit(std::vector<std::string> own,
                                                     const std::vector<std::string>& options,
                                                     const std::vector<std::string>& script,
                                                     std::string& job) const;

    const nxSlurmFolder& _folder;
    const std::string _name;
    std::vector<Task> _tasks;
};
