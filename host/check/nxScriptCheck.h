#pragma once

#include <string>
#include <vector>

#include "host/check/nxScriptAnalyzer.h"
#include "host/check/nxScriptFinding.h"
#include "host/jobs/nxJobOptions.h"
#include "host/sandbox/nxRunPulse.h"
#include "scriptFramework/lua/nxScriptProfile.h"

class nxScriptSource;

struct nxScriptCheckOptions
{
    std::vector<nxJobOptions> jobs;    // their scripts, and the parameters that the dry run shows them
    std::vector<std::string> modules;  // Lua files in front of each script
    bool areTests = false;             // all scripts; else those whose names end in _test.lua
    bool dryRun = true;                // also load each script and run its OnInit
    nxScriptProfile profile = nxScriptProfile::Base;  // of the dry run
    nxRunPulse* pulse = nullptr;                      // where the dry run tells what goes on; null: nowhere
};

// Checks scripts without a market: whether they compile, what is wrong in their text, and whether OnInit runs
// through. A file of tests gets no modules and is only read. For one thread.
class nxScriptCheck
{
public:
    explicit nxScriptCheck(nxScriptCheckOptions options) : _options(std::move(options)) {}

    // False when a file could not be read or the checker cannot work; GetFailures tells. What could be
    // checked has been all the same.
    [[nodiscard]] bool Run();

    // Sorted by file, line and column; each once.
    const std::vector<nxScriptFinding>& GetFindings() const { return _findings; }
    const std::vector<std::string>& GetFailures() const { return _failures; }
    // What the scripts asked for while the dry run loaded them and in OnInit, each name once.
    const std::vector<std::string>& GetParameters() const { return _parameters; }

private:
    bool _IsTest(const nxJobOptions& job) const;
    void _CheckJob(nxScriptAnalyzer& analyzer, const nxScriptSource& source, const nxJobOptions& job);
    void _TryJob(const nxScriptSource& source, const nxJobOptions& job,
                 std::vector<nxScriptFinding>& findings);

    nxScriptCheckOptions _options;
    std::vector<nxScriptFinding> _findings;
    std::vector<std::string> _failures;
    std::vector<std::string> _parameters;
};
