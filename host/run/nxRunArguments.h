#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/feed/nxFormArguments.h"
#include "host/run/nxRunOptions.h"

// The jobs of a command and what they start with, as texts of a command line.
struct nxJobArguments
{
    std::vector<std::string> scripts;  // one for each job
    std::vector<std::string> names;    // of the jobs in their order; missing ones are named by the file
    std::vector<std::string> parameterFiles;  // see nxParameterFile
    std::vector<std::string> parameters;      // [JOB/]NAME[:TYPE]=VALUE; they go before the files
    bool mayShareNames = false;               // nothing tells the jobs apart by them

    // Adds the jobs. What names a job goes before what is for all, in a file and on the command line each; a
    // later file goes before an earlier one. Null, or what is wrong, with its place.
    [[nodiscard]] std::optional<std::string> MakeJobs(std::vector<nxJobOptions>& jobs) const;

private:
    std::optional<std::string> _NameJobs(std::vector<nxJobOptions>& jobs) const;
    std::optional<std::string> _SetParameters(std::vector<nxJobOptions>& jobs) const;
};

// Those of a run, and what their parameters become during it.
struct nxRunArguments : nxJobArguments
{
    std::vector<std::string> selections;  // [JOB/]KEY=VALUE,...; see nxJobSelection
    std::vector<std::string> barPeriods;  // [PRODUCT=]PERIOD; see nxFeedTime
    nxFormArguments form;
    std::string from, to, warmup;
    bool mayBeginLater =
        false;  // who makes the runs sets where each begins, after which there may be a warm-up
    // Texts of nxLatency or, but for the feed, files of nxLatencyFile.
    std::optional<std::string> latency;  // of requests, and of answers without one of their own
    std::optional<std::string> answerLatency;
    std::optional<std::string> feedLatency;
    std::string account;
    std::vector<std::string> adjustmentFiles;                  // see nxAdjustmentFile
    std::vector<std::string> eventFiles;                       // see nxParameterEvents
    std::vector<std::pair<std::string, std::string>> changes;  // TIME and [JOB/]NAME=VALUE

    // Fills the products, the jobs and the changes of `options`, whose files must be named by then: nothing
    // is read where one of them would be written over or could not be read. Null, or what is wrong, with its
    // place.
    [[nodiscard]] std::optional<std::string> Apply(nxRunOptions& options) const;
    // The files that are read, as they are named.
    std::vector<std::string> GetInputs(const nxRunOptions& options) const;
    // Those that are written, by the options that name them; "-" is standard output.
    static std::vector<std::pair<const char*, std::string>> GetOutputs(const nxRunOptions& options);

private:
    std::optional<std::string> _FindObstacle(const nxRunOptions& options) const;
    std::optional<std::string> _SetSpan(nxRunOptions& options) const;
    std::optional<std::string> _SetLatencies(nxRunOptions& options) const;
    std::optional<std::string> _SetSelections(std::vector<nxJobOptions>& jobs) const;
    std::optional<std::string> _AddAdjustments(nxRunOptions& options) const;
    std::optional<std::string> _AddChanges(nxRunOptions& options) const;
};
