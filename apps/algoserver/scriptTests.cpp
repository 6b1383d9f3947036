#include "apps/algoserver/scriptTests.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>
#include <iostream>

#include "apps/algoserver/colour.h"
#include "apps/algoserver/signals.h"
#include "host/trial/nxTrial.h"

namespace {

constexpr int Failed = 1, CannotRun = 2;

std::string GetPlace(const nxTrialOutcome& outcome, const nxTrialOutcome::Fault& fault)
{
    return fault.line == 0 ? outcome.file + ": " : fmt::format("{}:{}: ", outcome.file, fault.line);
}

void Print(const nxTrialOutcome& outcome)
{
    const bool isColoured = ShowsColours(1);
    const bool isGood = outcome.faults.empty();
    const std::string word = isGood ? "ok    " : "FAILED";
    std::cout << (!isColoured ? word : Paint(isGood ? Colour::Green : Colour::Red, word))
              << fmt::format("  {}  {} ms\n", outcome.name, outcome.duration.count());
    for (const nxTrialOutcome::Fault& fault : outcome.faults)
        std::cout << "        " << GetPlace(outcome, fault) << fault.text << "\n";
    std::cout.flush();
}

std::string EscapeXml(const std::string& text)
{
    std::string escaped;
    for (const char letter : text) {
        switch (letter) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                // XML knows no other control characters.
                escaped += static_cast<unsigned char>(letter) < ' ' && letter != '\n' && letter != '\t'
                               ? '?'
                               : letter;
        }
    }
    return escaped;
}

bool WriteJunit(const std::string& path, const std::vector<nxTrialOutcome>& outcomes)
{
    const auto failures =
        std::ranges::count_if(outcomes, [](const auto& each) { return !each.faults.empty(); });
    std::ofstream file(path);
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         << fmt::format("<testsuites><testsuite name=\"algoserver\" tests=\"{}\" failures=\"{}\">\n",
                        outcomes.size(), failures);
    for (const nxTrialOutcome& outcome : outcomes) {
        file << fmt::format("<testcase classname=\"{}\" name=\"{}\" time=\"{:.3f}\">",
                            EscapeXml(outcome.file), EscapeXml(outcome.name),
                            static_cast<double>(outcome.duration.count()) / 1000.0);
        std::string text;
        for (const nxTrialOutcome::Fault& fault : outcome.faults)
            text += GetPlace(outcome, fault) + fault.text + "\n";
        if (!text.empty())
            file << fmt::format("<failure message=\"{}\">{}</failure>",
                                EscapeXml(outcome.faults.front().text), EscapeXml(text));
        file << "</testcase>\n";
    }
    file << "</testsuite></testsuites>\n";
    return !file.flush().fail();
}

int Refuse(const std::string& text)
{
    std::cerr << "algoserver run: " << text << "\n";
    return CannotRun;
}

// Empty, or what was given that the test files tell.
std::string FindObstacle(const RunArguments& arguments)
{
    if (!arguments.jobs.scripts.empty())
        return "--test takes files of tests, which name their scripts; " + arguments.jobs.scripts.front() +
               " is too much";
    if (!arguments.options.data.empty() || !arguments.options.productFile.empty())
        return "--test takes files of tests, which describe their market; leave out --data and --products";
    if (const auto outputs = nxRunArguments::GetOutputs(arguments.options); !outputs.empty())
        return std::string(outputs.front().first) + " is for one run, and --test makes one for each test";
    return {};
}

}  // namespace

void AddScriptTests(CLI::App& run, ScriptTestArguments& arguments, CLI::Option& data)
{
    CLI::Option* const test =
        run.add_option("--test", arguments.files,
                       "Run the functions Test... of those files instead, each over the market "
                       "that it describes (docs/testing.md)")
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
    if (const std::string obstacle = FindObstacle(arguments); !obstacle.empty()) return Refuse(obstacle);
    nxTrial::Options options{arguments.options, arguments.jobs};
    options.run.interrupted = &GetInterrupted();
    options.run.continueOnError = arguments.onError == "continue";
    options.run.memoryLimit = std::size_t{arguments.memoryLimit} << 20;
    options.run.callbackLimit = arguments.sandbox.GetCallbackLimit(true);
    options.limit = std::chrono::nanoseconds(std::llround(tests.limit * 1e9));
    CatchSignals();
    std::vector<nxTrialOutcome> outcomes;
    bool isWhole = true;
    for (const std::string& path : tests.files) {
        nxTrial trial(options);
        if (const auto error = trial.Open(path)) {
            std::cerr << *error << "\n";
            isWhole = false;
            continue;
        }
        for (const std::string& name : trial.GetTests()) {
            if (GetInterrupted()) break;
            if (!tests.filter.empty() && fnmatch(tests.filter.c_str(), name.c_str(), 0) != 0) continue;
            outcomes.push_back(trial.Run(name));
            Print(outcomes.back());
        }
    }
    const auto failed =
        std::ranges::count_if(outcomes, [](const auto& each) { return !each.faults.empty(); });
    if (!tests.junitFile.empty() && !WriteJunit(tests.junitFile, outcomes))
        return Refuse(tests.junitFile + ": cannot be written");
    if (outcomes.empty()) return isWhole ? Refuse("no test matches --filter " + tests.filter) : CannotRun;
    std::cout << fmt::format("{} {}, {} failed\n", outcomes.size(), outcomes.size() == 1 ? "test" : "tests",
                             failed);
    if (!isWhole) return CannotRun;
    return failed == 0 && !GetInterrupted() ? 0 : Failed;
}
