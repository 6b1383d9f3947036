#include "apps/algoserver/shell.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>

#include "apps/algoserver/commandTree.h"
#include "apps/algoserver/completion.h"
#include "apps/algoserver/doctor.h"
#include "apps/algoserver/manual.h"
#include "host/report/nxOutputFile.h"

namespace {

constexpr int Failed = 2;

int Refuse(const char* command, const std::string& text)
{
    std::cerr << "algoserver " << command << ": " << text << "\n";
    return Failed;
}

int Write(const char* command, const std::string& path, const std::string& text)
{
    nxOutputFile file(command);
    if (const auto error = file.Open(path)) return Refuse(command, *error);
    file.Write(text);
    const auto error = file.Close();
    return error ? Refuse(command, *error) : 0;
}

const CLI::App* FindCommand(const CLI::App& app, const std::vector<std::string>& path)
{
    const CLI::App* command = &app;
    for (const std::string& name : path) {
        const auto found =
            command->get_subcommands([&name](const CLI::App* inner) { return inner->get_name() == name; });
        if (found.empty()) return nullptr;
        command = found.front();
    }
    return command;
}

std::vector<std::string> GetCommandNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        if (!command->get_group().empty()) names.push_back(command->get_name());
    return names;
}

void AddHelp(CLI::App& app, int& status)
{
    const auto path = std::make_shared<std::vector<std::string>>();
    CLI::App& help = *app.add_subcommand("help", "Print the help of a command");
    help.add_option("command", *path, "The command; without it all of them are listed")
        ->option_text(fmt::format("{} ...", fmt::join(GetCommandNames(app), "|")));
    help.callback([path, &app, &status] {
        const CLI::App* command = FindCommand(app, *path);
        const std::string name = fmt::format("{}", fmt::join(*path, " "));
        if (command == nullptr)
            status = Refuse("help", fmt::format("no command \"{}\"; there are {}", name, ListCommands(app)));
        else
            std::cout << command->get_formatter()->make_help(
                command, path->empty() ? "algoserver" : "algoserver " + name, CLI::AppFormatMode::Normal);
    });
}

void AddCompletion(CLI::App& app, int& status)
{
    struct Arguments
    {
        std::string shell, output = "-";
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& completion =
        *app.add_subcommand("completion", "Write what a shell reads to complete command lines");
    completion.footer(
        "For the shell that is open: source <(algoserver completion bash). For all of them the files belong "
        "where the\n"
        "shell looks: ~/.local/share/bash-completion/completions/algoserver, a folder of zsh's fpath under "
        "the name\n"
        "_algoserver, ~/.config/fish/completions/algoserver.fish. The installed program has them there.");
    completion.add_option("shell", arguments->shell, "The shell")
        ->required()
        ->check(CLI::IsMember(std::vector<std::string>{"bash", "zsh", "fish"}));
    completion.add_option("--output,-o", arguments->output, "File to write; - is standard output")
        ->type_name("FILE")
        ->capture_default_str();
    completion.callback([arguments, &app, &status] {
        static const std::map<std::string, std::string (*)(const CommandTree&)> Makers = {
            {"bash", MakeBashCompletion}, {"zsh", MakeZshCompletion}, {"fish", MakeFishCompletion}};
        status = Write("completion", arguments->output, Makers.at(arguments->shell)(CommandTree::Read(app)));
    });
}

// A page for each command, into a folder.
int WriteManual(const CommandTree& command, const std::string& folder)
{
    int status = Write("man", folder + "/" + command.Join("-") + ".1", MakeManualPage(command));
    for (const CommandTree& inner : command.commands)
        status = std::max(status, WriteManual(inner, folder));
    return status;
}

// Hidden: it is for the rules of the installation.
void AddManual(CLI::App& app, int& status)
{
    const auto folder = std::make_shared<std::string>();
    CLI::App& manual = *app.add_subcommand("man", "Write the manual pages")->group("");
    manual.add_option("--output,-o", *folder, "Folder to write a page of each command to")
        ->type_name("DIR")
        ->required();
    manual.callback([folder, &app, &status] {
        std::error_code error;
        std::filesystem::create_directories(*folder, error);
        status = error ? Refuse("man", *folder + ": cannot be made: " + error.message())
                       : WriteManual(CommandTree::Read(app), *folder);
    });
}

}  // namespace

std::string ListCommands(const CLI::App& app)
{
    const std::vector<std::string> names = GetCommandNames(app);
    return fmt::format("{} and {}", fmt::join(names.begin(), names.end() - 1, ", "), names.back());
}

void AddShellCommands(CLI::App& app, int& status)
{
    AddCompletion(app, status);
    AddDoctorCommand(app, status);
    AddManual(app, status);
    AddHelp(app, status);
}
