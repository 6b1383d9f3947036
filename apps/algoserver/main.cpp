#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "apps/algoserver/check.h"
#include "apps/algoserver/debug.h"
#include "apps/algoserver/generate.h"
#include "apps/algoserver/import.h"
#include "apps/algoserver/layouts.h"
#include "apps/algoserver/memory.h"
#include "apps/algoserver/new.h"
#include "apps/algoserver/report.h"
#include "apps/algoserver/run.h"
#include "apps/algoserver/shell.h"
#include "apps/algoserver/sweep.h"
#include "apps/algoserver/types.h"

namespace {

constexpr int Failed = 2;

// Without a stream or a string: there may be no memory.
void Tell(const char* what)
{
    for (const char* text : {"algoserver: ", what, "\n"})
        if (write(STDERR_FILENO, text, std::strlen(text)) < 0) return;
}

// For what cannot be caught: an exception, mostly for lack of memory, in a destructor or on a thread that
// nobody waits for. What is complete lies in its files, and the status says that something is not.
[[noreturn]] void EndAtOnce()
{
    try {
        if (const auto exception = std::current_exception()) std::rethrow_exception(exception);
    } catch (const std::bad_alloc&) {
        Tell("out of memory; ended at once");
    } catch (const std::exception& exception) {
        Tell(exception.what());
    }
    _exit(Failed);
}

// What nobody knows goes before what is missing: an option that is mistyped is both.
std::string Explain(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> unknown = app.remaining(true);
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    return isMissing && !unknown.empty() ? CLI::ExtrasError(unknown).what() : error.what();
}

int Run(int argc, char** argv)
{
    CLI::App app(
        "Runs trading algorithms written in Lua 5.1 over recorded market data.\n"
        "Exit status: 0 done, 1 a script failed or check found something, 2 bad input or usage.",
        "algoserver");
    app.require_subcommand(0, 1);
    app.set_version_flag("-v,--version", NX_VERSION);
    int status = 0;
    AddRunCommand(app, status);
    AddSweepCommand(app, std::vector<std::string>(argv + 1, argv + argc), status);
    AddReportCommand(app, status);
    AddImportCommand(app, status);
    AddLayoutsCommand(app, status);
    AddGenerateCommand(app, status);
    AddCheckCommand(app, status);
    AddNewCommand(app, status);
    AddTypesCommand(app, status);
    AddDebugCommand(app, status);
    AddShellCommands(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForVersion& version) {
        return app.exit(version);
    } catch (const CLI::ParseError& error) {
        std::cerr << "algoserver: " << Explain(app, error) << "\n";
        if (!app.get_subcommands().empty()) {
            std::cerr << "Try 'algoserver " << app.get_subcommands().front()->get_name() << " --help'.\n";
            return 2;
        }
    }
    if (!app.get_subcommands().empty()) return status;
    std::cerr << "algoserver: no command; there are " << ListCommands(app) << ". Try 'algoserver --help'.\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    std::set_terminate(EndAtOnce);
    WatchMemory();
    try {
        const int status = Run(argc, argv);
        // Status 2 has told why.
        if (!GetShortOfMemory() || status == Failed) return status;
        Tell("out of memory");
    } catch (const std::bad_alloc&) {
        Tell("out of memory");
    } catch (const std::exception& exception) {
        Tell(exception.what());
    }
    return Failed;
}
