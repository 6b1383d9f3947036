#include <CLI/CLI.hpp>
#include <iostream>

#include "apps/algoserver/check.h"
#include "apps/algoserver/generate.h"
#include "apps/algoserver/import.h"
#include "apps/algoserver/layouts.h"
#include "apps/algoserver/report.h"
#include "apps/algoserver/run.h"

int main(int argc, char** argv)
{
    CLI::App app(
        "Runs trading algorithms written in Lua 5.1 over recorded market data.\n"
        "Exit status: 0 done, 1 a script failed or check found something, 2 bad input or usage.",
        "algoserver");
    app.require_subcommand(0, 1);
    app.set_version_flag("--version", NX_VERSION);
    int status = 0;
    AddRunCommand(app, status);
    AddReportCommand(app, status);
    AddImportCommand(app, status);
    AddLayoutsCommand(app, status);
    AddGenerateCommand(app, status);
    AddCheckCommand(app, status);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForAllHelp& help) {
        return app.exit(help);
    } catch (const CLI::CallForVersion& version) {
        return app.exit(version);
    } catch (const CLI::ParseError& error) {
        std::cerr << "algoserver: " << error.what() << "\n";
        if (!app.get_subcommands().empty()) {
            std::cerr << "Try 'algoserver " << app.get_subcommands().front()->get_name() << " --help'.\n";
            return 2;
        }
    }
    if (!app.get_subcommands().empty()) return status;
    std::cerr << "algoserver: no command; there are run, report, import, layouts, generate and check. Try "
                 "'algoserver --help'.\n";
    return 2;
}
