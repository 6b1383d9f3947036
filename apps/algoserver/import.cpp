#include "apps/algoserver/import.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "apps/algoserver/arguments.h"
#include "apps/algoserver/forms.h"
#include "apps/algoserver/signals.h"
#include "host/feed/nxDataSet.h"
#include "host/feed/nxFeedTime.h"
#include "host/feed/nxImport.h"
#include "host/report/nxProgressBar.h"

namespace {

struct ImportArguments
{
    nxImportOptions options;
    nxFormArguments form;
    std::vector<std::string> files, barPeriods;
    std::string barTime, sortWindow = "10s";
};

int Refuse(const std::string& text)
{
    std::cerr << text << "\n";
    return 2;
}

std::optional<std::string> Apply(ImportArguments& arguments)
{
    nxImportOptions& options = arguments.options;
    nxDataFiles files;
    for (const std::string& name : arguments.files)
        if (auto error = files.Add(name)) return error;
    options.files = files.paths;
    if (auto error = arguments.form.Apply(options.feed.form)) return error;
    if (auto error = nxSetBarPeriods(arguments.barPeriods, options.feed.barPeriods)) return error;
    if (!arguments.barTime.empty()) options.feed.barsBearStart = arguments.barTime == "start";
    if (!nxFeedTime::SetPeriodFromText(arguments.sortWindow, options.sortWindow))
        return "--sort-window " + arguments.sortWindow + ": is no length of time such as 10s or 1m";
    if (options.folder.empty() && !options.isDryRun)
        return "algoserver import: -o DIR tells where to write to";
    options.feed.takesRowsAsTheyStand = true;
    return std::nullopt;
}

int Import(ImportArguments& arguments)
{
    nxImportOptions& options = arguments.options;
    if (const auto error = Apply(arguments)) return Refuse(*error);
    CatchSignals();
    options.interrupted = options.feed.interrupted = &GetInterrupted();
    nxProgressBar progress(std::cerr, isatty(STDERR_FILENO) != 0);
    options.progress = [&progress](unsigned long long rows, unsigned long long bytes,
                                   unsigned long long total) { progress.Update(rows, bytes, total); };
    nxImport import(options);
    const nxImport::Result result = import.Run(std::cout);
    progress.Erase();
    if (result == nxImport::Result::Interrupted) return Refuse("interrupted; nothing was written");
    if (result == nxImport::Result::Failed) return Refuse(import.GetError());
    return std::cout.flush().fail() ? Refuse("standard output cannot be written") : 0;
}

}  // namespace

void AddImportCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<ImportArguments>();
    CLI::App& command = *app.add_subcommand("import", "Make a set of data of files from anywhere");
    command.footer(
        "Writes one packed file for each product and kind, and data.toml, which --data takes, and tells what "
        "is\n"
        "odd about the data: gaps, rows that come late or twice, outliers, prices of 0 and below. A file "
        "that\n"
        "cannot be read is told by its place, and then, as after Ctrl-C, nothing is written.");
    command.add_option("files", arguments->files, "Files, folders, or patterns in quotes")
        ->required()
        ->type_name("FILE");
    command.add_option("-o,--output", arguments->options.folder, "The folder to write to")->type_name("DIR");
    command.add_flag("--dry-run", arguments->options.isDryRun, "Only tell what would be taken for what");
    AddFormOptions(command, arguments->form);
    command
        .add_option(
            "--bar-time", arguments->barTime,
            "What the times of bars are: their end, or their start; without it as the layout says, else "
            "the end")
        ->check(CLI::IsMember({"end", "start"}));
    AddRepeated(command, "--bar-period", arguments->barPeriods,
                "How far apart the bars of that product, or of all others, are: 30s, 1m, 4h, 1d")
        ->type_name("[PRODUCT=]PERIOD");
    command.add_flag("--lenient,-l", arguments->options.feed.isLenient,
                     "Tell and skip malformed rows instead of ending");
    command
        .add_option("--sort-window", arguments->sortWindow,
                    "By how much a row may come too late in its file and is sorted in")
        ->type_name("PERIOD")
        ->capture_default_str();
    command.callback([arguments, &status] { status = Import(*arguments); });
}
