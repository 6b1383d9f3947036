#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/sweep/nxSlurmWork.h"

// The folder that a sweep on a cluster shares with its tasks: what is to be done, which slices are, and what
// went wrong. The files of slice 7 are slice-7.db, its results, slice-7.done or slice-7.failed, how it ended,
// and slice-7.log, which is slice-1000+7.log in the array that begins with slice 1000.
class nxSlurmFolder
{
public:
    enum class Slice { Missing, Done, Failed };
    explicit nxSlurmFolder(std::filesystem::path path);
    ~nxSlurmFolder();
    nxSlurmFolder(const nxSlurmFolder&) = delete;
    nxSlurmFolder& operator=(const nxSlurmFolder&) = delete;

    // These give null, or what is wrong and what helps.
    // Makes the folder where there is none, and keeps others out who do the same, for as long as the object
    // lives.
    [[nodiscard]] std::optional<std::string> Lock(const std::string& deed);
    // `work` becomes none where nothing has been submitted into the folder yet.
    [[nodiscard]] std::optional<std::string> Read(std::optional<nxSlurmWork>& work) const;
    // A file as a whole, or not at all.
    [[nodiscard]] std::optional<std::string> Write(const std::string& name, const std::string& text) const;
    [[nodiscard]] std::optional<std::string> NoteJob(const std::string& job, const std::string& what) const;

    std::string GetPath() const { return _path.string(); }
    std::filesystem::path GetFile(const std::string& name) const { return _path / name; }
    static std::string GetSliceName(unsigned int slice) { return "slice-" + std::to_string(slice); }
    // Of the slice that is that one of the array which begins with `begin`.
    static std::string GetLogName(unsigned int begin, const std::string& index)
    {
        return "slice-" + (begin == 0 ? std::string() : std::to_string(begin) + "+") + index + ".log";
    }
    std::string ReadLine(const std::string& name) const;  // the first one of a file; empty: there is none
    bool Has(const std::string& name) const;
    void Remove(const std::string& name) const;
    // All that belongs to the sweep but its merged results.
    void RemoveAll() const;
    // How each slice is, from one look at the folder.
    std::vector<Slice> GetSlices(unsigned int count) const;
    // What the jobs are named by, so that they are found again whoever lost their numbers.
    std::string GetJobName() const;

private:
    std::filesystem::path _path;
    int _lock = -1;
};
