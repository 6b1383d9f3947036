#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/jobs/nxScriptSource.h"
#include "host/run/nxRunOptions.h"

// The files of a run's scripts, as an editor knows them: where a line of a job's assembled text stands, and
// where one of a file lies in the texts of the jobs. Read once.
class nxDebugSources
{
public:
    struct Place
    {
        std::string path;  // absolute
        unsigned int line = 0;
    };
    // A line of a file in the text of one job.
    struct Spot
    {
        std::size_t job;
        unsigned int line;    // of the text
        unsigned int inFile;  // of the file: the one asked for, or the next with code
    };

    // Null, or why a script cannot be read: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Read(const nxRunOptions& options);

    // None for a line that is of no file.
    std::optional<Place> Find(std::size_t job, unsigned int line) const;
    // One for each job that has the file; none where no line with code follows.
    std::vector<Spot> GetSpots(const std::string& path, unsigned int line) const;
    bool HasFile(const std::string& path) const;
    // Of the file, with code.
    std::vector<unsigned int> GetLines(const std::string& path) const;
    const std::vector<std::string>& GetPaths() const { return _paths; }
    const std::string& GetName(std::size_t job) const { return _jobs[job].name; }
    std::size_t GetCount() const { return _jobs.size(); }
    // An error of Lua in the author's files and lines.
    std::string Explain(std::size_t job, const std::string& error) const;

private:
    struct Job
    {
        std::string name;
        nxScriptSource source;
        std::vector<unsigned int> lines;  // of the text, with code; sorted
    };

    static std::string _Normalise(const std::string& path);
    template <class Take>
    void _ForFiles(const std::string& path, Take take) const;

    std::vector<Job> _jobs;
    std::vector<std::string> _paths;
};
