#include "apps/algoserver/check.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "host/check/nxScriptCheck.h"

namespace {

struct CheckArguments
{
    nxScriptCheckOptions options;
    bool noRun = false;
    bool json = false;
};

enum Status { Clean = 0, Found = 1, Failed = 2 };

int Check(const CheckArguments& arguments)
{
    nxScriptCheckOptions options = arguments.options;
    options.dryRun = !arguments.noRun;
    nxScriptCheck check(std::move(options));
    const bool succeeded = check.Run();
    if (arguments.json) {
        check.WriteJson(std::cout);
    } else {
        check.WriteText(std::cout);
    }
    for (const std::string& failure : check.GetFailures())
        std::cerr << "algoserver check: " << failure << "\n";
    if (std::cout.flush().fail()) {
        std::cerr << "algoserver check: standard output cannot be written\n";
        return Failed;
    }
    return !succeeded ? Failed : check.GetFindings().empty() ? Clean : Found;
}

}  // namespace

void AddCheckCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* check = app.add_subcommand("check", "Look for mistakes in scripts, without a market");
    check->footer(
        "Findings go to standard output, a line each: file:line:column: message. A column of 0 stands where "
        "only\n"
        "the line is known. Exit status: 0 nothing found, 1 something found, 2 usage or a file that cannot "
        "be "
        "read.");
    check->add_option("script", arguments->options.scripts, "The Lua scripts, each a job of its own")
        ->required();
    check
        ->add_option("--module,-m", arguments->options.modules,
                     "Lua file to put in front of each script; may be repeated")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    check->add_flag("--no-run", arguments->noRun, "Only read the scripts: do not load them and run OnInit");
    check->add_flag("--json", arguments->json, "Write one JSON array instead of lines");
    check->callback([arguments, &status] { status = Check(*arguments); });
}
