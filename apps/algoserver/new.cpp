#include "apps/algoserver/new.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "apps/algoserver/signals.h"
#include "host/author/nxScriptProject.h"
#include "host/run/nxRunOptions.h"

namespace {

struct Arguments
{
    std::string folder;
    std::string templateName;
};

int New(const Arguments& arguments)
{
    CatchSignals();
    nxScriptProject project(arguments.folder, arguments.templateName);
    if (const auto error = project.Write([] { return !GetInterrupted(); })) {
        std::cerr << "algoserver new: " << *error << "\n";
        return static_cast<int>(nxRunResult::InputFailed);
    }
    std::cout << "cd " << arguments.folder << "\n";
    for (const std::string& command : project.GetCommands())
        std::cout << command << "\n";
    return 0;
}

}  // namespace

void AddNewCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<Arguments>();
    const std::vector<std::string> templates = nxScriptProject::GetTemplates();
    arguments->templateName = templates.front();
    CLI::App& command = *app.add_subcommand("new", "Make a folder with a script that runs, and data for it");
    command.footer(
        "The folder has the script, tests of it, a synthetic day of its products, types for editors, and a\n"
        "README.md with the commands, which are printed, too. One that is there is left as it is.");
    command.add_option("name", arguments->folder, "The folder, whose name the script gets, too")->required();
    command.add_option("--template,-t", arguments->templateName, "What the script begins as")
        ->check(CLI::IsMember(templates))
        ->capture_default_str();
    command.callback([arguments, &status] { status = New(*arguments); });
}
