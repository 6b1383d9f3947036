#include "apps/algoserver/scriptTests.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iostream>

#include "apps/algoserver/colour.h"
#include "apps/algoserver/signals.h"
#include "host/report/nxOutputFile.h"
#include "host/run/nxRunFiles.h"
#include "host/trial/nxTrialReports.h"

namespace {

constexpr int Failed = 1, CannotRun = 2;

using State = nxTrialOutcome::State;
using Outcomes = std::vector<nxTrialOutcome>;

// What passed or failed goes to standard output, what could not be run to standard error.
void Print(const nxTrialOutcome& outcome)
{
    if (outcome.state == State::NoTests) {
        std::cerr << outcome.Describe(outcome.faults.front()) << std::endl;
        return;
    }
    if (outcome.state == State::NotRun) {
        std::cout << "-       " << (outcome.name.empty() ? outcome.file : outcome.name) << "  not run\n";
        return;
    }
    const bool isGood = outcome.state == State::Passed;
    const std::string word = isGood ? "ok    " : "FAILED";
    std::cout << (!ShowsColours(1) ? word : Paint(isGood ? Colour::Green : Colour::Red, word))
              << fmt::format("  {}  {} ms\n", outcome.name, outcome.duration.count());
    for (const nxTrialOutcome::Fault& fault : outcome.faults)
        std::cout << "        " << outcome.Describe(fault) << "\n";
    std::cout.flush();
}

int Refuse(const std::string& text)
{
    std::cerr << "algoserver run: " << text << "\n";
    return CannotRun;
}

// Empty, or what was given that the test files tell.
std::string FindObstacle(const ScriptTestArguments& tests, const RunArguments& arguments)
{
    if (!arguments.jobs.scripts.empty())
        return "--test takes files of tests, which name their scripts; " + arguments.jobs.scripts.front() +
               " is too much";
    if (!arguments.options.data.empty() || !arguments.options.productFile.empty())
        return "--test takes files of tests, which describe their market; leave out --data and --products";
    for (const auto& [option, path] : nxRunArguments::GetOutputs(arguments.options))
        if (option != std::string_view("--json"))
            return std::string(option) + " is for one run, and --test makes one for each test";
    if (tests.junitFile == "-" && arguments.options.jsonFile == "-")
        return "standard output can be for --junit or for --json, not for both";
    nxRunFiles files;
    files.AddInputs(tests.files);
    if (!tests.junitFile.empty()) files.AddOutput("--junit", tests.junitFile);
    if (!arguments.options.jsonFile.empty()) files.AddOutput("--json", arguments.options.jsonFile);
    return files.FindClash().value_or("");
}

// One for other programs; a path that is empty is none.
class Report
{
public:
    explicit Report(const char* what) : _file(what) {}

    [[nodiscard]] std::optional<std::string> Open(const std::string& path)
    {
        return path.empty() ? std::nullopt : _file.Open(path);
    }
    [[nodiscard]] std::optional<std::string> Close(std::string (*make)(const Outcomes&),
                                                   const Outcomes& outcomes)
    {
        if (!_file.IsOpen()) return std::nullopt;
        _file.Write(make(outcomes));
        return _file.Close();
    }

private:
    nxOutputFile _file;
};

nxTrial::Options GetOptions(const ScriptTestArguments& tests, const RunArguments& arguments)
{
    nxTrial::Options options{arguments.options, arguments.jobs};
    options.run.jsonFile.clear();
    options.run.interrupted = &GetInterrupted();
    options.run.continueOnError = arguments.onError == "continue";
    options.run.memoryLimit = std::size_t{arguments.memoryLimit} << 20;
    options.run.callbackLimit = arguments.sandbox.GetCallbackLimit(true);
    options.limit = std::chrono::nanoseconds(std::llround(tests.limit * 1e9));
    return options;
}

// After a Ctrl-C they are only named.
void RunFile(const std::string& path, const std::string& filter, const nxTrial::Options& options,
             Outcomes& outcomes)
{
    const auto add = [&outcomes](nxTrialOutcome outcome) {
        Print(outcome);
        outcomes.push_back(std::move(outcome));
    };
    nxTrial trial(options);
    const auto fault = GetInterrupted() ? std::nullopt : trial.Open(path);
    if (GetInterrupted()) return add({.file = path});
    if (fault) return add({.file = path, .state = State::NoTests, .faults = {*fault}});
    for (const std::string& name : trial.GetTests()) {
        if (!filter.empty() && fnmatch(filter.c_str(), name.c_str(), 0) != 0) continue;
        add(GetInterrupted() ? nxTrialOutcome{.file = path, .name = name} : trial.Run(name));
    }
}

// The last line, and the exit status.
int Conclude(const Outcomes& outcomes)
{
    const auto count = [&](State state) {
        return std::ranges::count(outcomes, state, &nxTrialOutcome::state);
    };
    const auto failed = count(State::Failed), run = count(State::Passed) + failed,
               left = count(State::NotRun);
    if (run + left > 0)
        std::cout << fmt::format("{} {}, {} failed{}\n", run, run == 1 ? "test" : "tests", failed,
                                 left == 0 ? "" : fmt::format(", {} not run", left));
    if (std::cout.flush().fail()) return Refuse("standard output cannot be written");
    if (count(State::NoTests) > 0) return CannotRun;
    return failed + left == 0 ? 0 : Failed;
}

}  // namespace

void AddScriptTests(CLI::App& run, ScriptTestArguments& arguments, CLI::Option& data)
{
    CLI::Option* const test =
        run.add_option("--test", arguments.files,
                       "Run the tests in those files instead, each over the market that it "
                       "describes (docs/testing.md)")
            ->type_name("FILE.lua");
    test->each([&data](const std::string&) { data.required(false); });
    run.add_option("--filter", arguments.filter, "Of the tests those alone whose names match that pattern")
        ->needs(test)
        ->option_text("PATTERN");
    run.add_option("--test-limit", arguments.limit, "Seconds that a test may take")
        ->check(CLI::Range(0.001, 1e6))
        ->needs(test)
        ->option_text("SECONDS [10]");
    run.add_option("--junit", arguments.junitFile,
                   "XML file to write what the tests came to, as CI systems read it")
        ->needs(test)
        ->type_name("FILE.xml");
}

int RunScriptTests(const ScriptTestArguments& tests, const RunArguments& arguments)
{
    if (const std::string obstacle = FindObstacle(tests, arguments); !obstacle.empty())
        return Refuse(obstacle);
    Report junit("the tests"), json("the tests");
    if (const auto error = junit.Open(tests.junitFile)) return Refuse(*error);
    if (const auto error = json.Open(arguments.options.jsonFile)) return Refuse(*error);
    const nxTrial::Options options = GetOptions(tests, arguments);
    CatchSignals();
    Outcomes outcomes;
    for (const std::string& path : tests.files)
        RunFile(path, tests.filter, options, outcomes);
    if (const auto error = junit.Close(&nxTrialReports::GetJunit, outcomes)) return Refuse(*error);
    if (const auto error = json.Close(&nxTrialReports::GetJson, outcomes)) return Refuse(*error);
    return outcomes.empty() ? Refuse("no test matches --filter " + tests.filter) : Conclude(outcomes);
}
