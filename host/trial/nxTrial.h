#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/run/nxRunArguments.h"
#include "host/trial/nxTrialProcess.h"
#include "host/trial/nxTrialSheet.h"

// What a test came to.
struct nxTrialOutcome
{
    // NoTests: the file itself, which cannot be read or has no tests; it has no name then. NotRun: the user
    // ended it, or it was still to come.
    enum class State { Passed, Failed, NotRun, NoTests };
    struct Fault
    {
        unsigned int line = 0;  // of the test file; 0: not known
        std::string text;
    };

    std::string file = {}, name = {};
    State state = State::NotRun;
    std::vector<Fault> faults = {};  // none: it passed, or has not begun
    std::chrono::milliseconds duration{0};

    // "FILE:LINE: TEXT".
    std::string Describe(const Fault& fault) const;
};

// Runs the tests of a file: each describes a script, a market and what is expected, and becomes a run of its
// own. Both the description and the run have processes of their own with what a strict run has. The calling
// process has no other thread.
class nxTrial
{
public:
    // How all runs are made. What names scripts, data and products is left out.
    struct Options
    {
        nxRunOptions run;
        nxRunArguments arguments;
        std::chrono::nanoseconds limit{std::chrono::seconds(10)};  // of a test, of real time
    };

    explicit nxTrial(const Options& options) : _options(options) {}

    // Null, or why there are no tests to run: the file cannot be read, is no Lua, or has no test functions.
    [[nodiscard]] std::optional<nxTrialOutcome::Fault> Open(const std::string& path);
    const std::vector<std::string>& GetTests() const { return _tests; }
    nxTrialOutcome Run(const std::string& test) const;

private:
    struct Plan;

    // Both throw a Fault.
    void _Run(const nxTrialSheet::Json& sheet, std::vector<nxTrialOutcome::Fault>& faults) const;
    void _Prepare(const nxTrialSheet::Json& sheet, Plan& plan) const;
    // In a process of its own.
    nxTrialProcess::Outcome _Do(const std::function<std::string()>& work) const;

    const Options& _options;
    nxTrialSheet _sheet;
    std::vector<std::string> _tests;
};
