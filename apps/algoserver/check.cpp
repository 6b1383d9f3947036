#include "apps/algoserver/check.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "apps/algoserver/arguments.h"
#include "host/check/nxFindingWriter.h"
#include "host/check/nxScriptCheck.h"
#include "host/run/nxRunFiles.h"
#include "host/sandbox/nxRunGuard.h"

namespace {

struct CheckArguments
{
    nxScriptCheckOptions options;
    nxJobArguments jobs;
    SandboxArguments sandbox;
    bool noRun = false;
    bool json = false;
    bool parameters = false;
    bool sarif = false;
};

enum Status { Clean = 0, Found = 1, Failed = 2 };

std::optional<std::string> MakeOptions(CheckArguments& arguments)
{
    nxJobArguments& jobs = arguments.jobs;
    nxRunFiles files;
    for (const auto* paths : {&jobs.scripts, &arguments.options.modules, &jobs.parameterFiles})
        files.AddInputs(*paths);
    if (const auto clash = files.FindClash()) return clash;
    jobs.mayShareNames = jobs.parameters.empty() && jobs.parameterFiles.empty();
    arguments.options.dryRun = !arguments.noRun;
    return jobs.MakeJobs(arguments.options.jobs);
}

int CheckHere(const CheckArguments& arguments)
{
    nxScriptCheck check(arguments.options);
    const bool succeeded = check.Run();
    if (arguments.parameters) {
        for (const std::string& name : check.GetParameters())
            std::cout << name << "\n";
    } else {
        const nxFindingWriter writer(check.GetFindings());
        if (arguments.json)
            writer.WriteJson(std::cout);
        else if (arguments.sarif)
            writer.WriteSarif(std::cout);
        else
            writer.WriteText(std::cout);
    }
    for (const std::string& failure : check.GetFailures())
        std::cerr << "algoserver check: " << failure << "\n";
    if (std::cout.flush().fail()) {
        std::cerr << "algoserver check: standard output cannot be written\n";
        return Failed;
    }
    return !succeeded ? Failed : check.GetFindings().empty() || arguments.parameters ? Clean : Found;
}

// The dry run runs what stands in the main part of the script, whoever wrote it.
int CheckGuarded(CheckArguments& arguments)
{
    nxScriptCheckOptions& options = arguments.options;
    constexpr std::size_t memory = std::size_t{4} << 30;
    nxRunGuard guard({.jobs = options.jobs,
                      .modules = options.modules,
                      .memory = memory,
                      .callbackLimit = arguments.sandbox.GetCallbackLimit(true)},
                     std::cerr);
    if (const auto status = guard.Start()) return *status;
    if (arguments.sandbox.isStrict) options.profile = nxScriptProfile::Strict;
    options.pulse = &guard.GetPage().pulse;
    return CheckHere(arguments);
}

int Check(CheckArguments& arguments)
{
    if (const auto error = MakeOptions(arguments)) {
        std::cerr << "algoserver check: " << *error << "\n";
        return Failed;
    }
    return arguments.noRun ? CheckHere(arguments) : CheckGuarded(arguments);
}

}  // namespace

void AddCheckCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App& check = *app.add_subcommand("check", "Look for mistakes in scripts, without a market");
    check.footer(
        "Findings go to standard output, a line each: file:line:column: message [number]. A column of 0\n"
        "stands where only the line is known. After them stands what each number means and how it is\n"
        "silenced. Exit status: 0 nothing found, 1 something found, 2 usage or a file that cannot be read.");
    check.add_option("script", arguments->jobs.scripts, "The Lua scripts, each a job of its own")
        ->required()
        ->type_name("SCRIPT");
    AddRepeated(check, "--module,-m", arguments->options.modules,
                "Lua file to put in front of each script; may be repeated")
        ->type_name("FILE.lua");
    AddJobOptions(check, arguments->jobs);
    check.add_flag(
        "--test", arguments->options.areTests,
        "The files are tests of scripts (docs/testing.md), whatever their names; those that end in "
        "_test.lua are known by that");
    CLI::Option* const noRun = check.add_flag("--no-run", arguments->noRun,
                                              "Only read the scripts: do not load them and run OnInit");
    AddSandbox(check, arguments->sandbox, "what a run with --sandbox strict lets it (strict)", "10");
    CLI::Option* const json =
        check.add_flag("--json", arguments->json, "Write one JSON array instead of lines");
    CLI::Option* const sarif = check.add_flag("--sarif", arguments->sarif,
                                              "Write SARIF 2.1.0 instead, for tools that show findings");
    sarif->excludes(json);
    check
        .add_flag("--parameters", arguments->parameters,
                  "In place of findings, the parameters that the scripts read while loaded and in OnInit")
        ->excludes(noRun)
        ->excludes(sarif)
        ->excludes(json);
    check.callback([arguments, &status] { status = Check(*arguments); });
}
