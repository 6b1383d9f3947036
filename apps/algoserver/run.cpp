#include "apps/algoserver/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>

#include "apps/algoserver/memory.h"
#include "apps/algoserver/runOptions.h"
#include "apps/algoserver/scriptTests.h"
#include "apps/algoserver/signals.h"
#include "apps/algoserver/watch.h"
#include "base/log/nxConsoleLogDevice.h"
#include "base/log/nxLogEntriesQueue.h"
#include "base/log/nxLogManager.h"
#include "host/check/nxScriptReview.h"
#include "host/run/nxRun.h"
#include "host/run/nxRunEnvelope.h"
#include "host/run/nxRunSandbox.h"
#include "host/sandbox/nxSharedOutput.h"

namespace {

const std::map<std::string, unsigned int> LogLevels = {{"detail", nxLogLevel_Detail},
                                                       {"info", nxLogLevel_Info},
                                                       {"warn", nxLogLevel_Warn},
                                                       {"error", nxLogLevel_Error}};

// Names what has to be given, which the library would show as optional: Run tells of a missing script itself,
// since --data has usually taken it.
class RunFormatter : public CLI::Formatter
{
public:
    std::string make_usage(const CLI::App*, std::string name) const override
    {
        return "Usage: " + name + " [OPTIONS] SCRIPT... --data FILE...\n";
    }
};

int Refuse(const std::string& text)
{
    std::cerr << "algoserver run: " << text << "\n";
    return static_cast<int>(nxRunResult::InputFailed);
}

// In the process where the scripts are to run.
int RunHere(const RunManner& manner, nxRunOptions options, std::ostream& out)
{
    nxScriptReview review(options.jobs, options.modules);
    if (manner.tellsFindings) review.WriteFirst(std::cerr);
    options.getNotes = [&review] { return review.GetNotes(); };
    nxLogManager::SetLevel(GetLogLevel(manner.logLevel));
    nxConsoleLogDevice console;
    nxLogManager::GetLogEntriesQueue().AddDevice(&console);
    const nxRunResult result = manner.isInEnvelope ? nxRunEnvelope::Run(options, out, std::cerr)
                                                   : nxRun(std::move(options), out, std::cerr).Run();
    const bool written = !out.flush().fail();
    nxLogManager::GetLogEntriesQueue().RemoveDevice(&console);
    return written ? static_cast<int>(result) : Refuse("standard output cannot be written");
}

// Before any thread is made: there is none in the child but the one that forks.
int RunStrictly(const RunManner& manner, nxRunOptions options)
{
    if (const std::string obstacle = nxRunSandbox::FindObstacle(options); !obstacle.empty())
        return Refuse(obstacle);
    nxRunGuard guard(nxRunSandbox::GetGuardOptions(options), std::cerr);
    if (const auto status = guard.Start()) return *status;
    nxRunSandbox::Share(options, guard.GetPage());
    nxSharedOutput output(guard.GetPage().output);
    return RunHere(manner, std::move(options), output.GetStream());
}

struct Arguments
{
    RunArguments run;
    RunManner manner;
    bool isWatching = false;
    ScriptTestArguments tests;
};

int RunOnce(const RunManner& manner, RunArguments arguments)
{
    if (const auto error = arguments.Finish()) {
        std::cerr << *error << "\n";
        return static_cast<int>(nxRunResult::InputFailed);
    }
    if (manner.isInEnvelope)
        if (const std::string obstacle = nxRunEnvelope::FindObstacle(arguments.options); !obstacle.empty())
            return Refuse(obstacle);
    return MakeRun(manner, std::move(arguments.options));
}

int Run(Arguments& arguments)
{
    if (!arguments.tests.files.empty()) {
        if (arguments.isWatching)
            return Refuse("--watch runs scripts, and --test runs tests: give one of them");
        return RunScriptTests(arguments.tests, arguments.run);
    }
    if (arguments.run.jobs.scripts.empty())
        return Refuse("no script; it stands in front of --data, which takes every name behind it");
    RunManner manner = arguments.manner;
    manner.isStrict = arguments.run.sandbox.isStrict;
    if (isatty(STDERR_FILENO) != 0) manner.tellsFindings = true;
    if (!arguments.isWatching) return RunOnce(manner, arguments.run);
    return WatchRuns(arguments.run, [&](RunArguments own) { return RunOnce(manner, std::move(own)); });
}

void AddResults(CLI::App& run, nxRunOptions& options)
{
    run.add_option(
           "--json", options.jsonFile,
           "JSON file to write the result to: measures, equity, round trips, orders, log; - is standard "
           "output, and then all else goes to standard error")
        ->type_name("FILE.json");
    run.add_option("--report", options.reportFile,
                   "HTML file to write the result to as a page, which a browser opens without a network")
        ->type_name("FILE.html");
    run.add_option("--trades", options.tradesFile, "CSV file to write the round trips to")
        ->type_name("FILE.csv");
    run.add_option("--equity", options.equityFile, "CSV file to write the equity over time to")
        ->type_name("FILE.csv");
    AddRoundTrips(run, options);
}

void AddProfile(CLI::App& run, nxRunOptions& options)
{
    CLI::Option* const profile =
        run.add_option("--profile", options.profileFile,
                       "HTML file to write to where the scripts spend their instructions and their time: by "
                       "callback, function and line")
            ->type_name("FILE.html");
    run.add_option("--profile-every", options.profileEvery,
                   "Instructions between the samples of --profile; 1 counts each")
        ->check(CLI::Range(1u, 1000u))
        ->needs(profile)
        ->option_text("1..1000 [997]");
    run.add_flag(
        "--profile-memory", options.profilesMemory,
        "Tell after the summary what the scripts hold, and what of it grows; on the page of --profile, "
        "too");
}

}  // namespace

void AddOutputs(CLI::App& run, nxRunOptions& options, std::string& logLevel)
{
    run.add_option("--record", options.recordFile,
                   "JSON Lines file to write all that leaves the scripts to; - is standard output, and then "
                   "all else goes to standard error")
        ->type_name("FILE.jsonl");
    run.add_option(
           "--equity-step", options.equityStep,
           "Change of a job's profit in a currency that --record tells; without it that at the end of "
           "each day")
        ->check(IsNumber(std::numeric_limits<double>::denorm_min(), HUGE_VAL, "above 0"))
        ->option_text("AMOUNT");
    AddResults(run, options);
    AddStore(run, options);
    run.add_option("--store-every", options.storeEvery,
                   "Recorded seconds between saves of the stores; without it when jobs and the run end")
        ->check(IsNumber(0.001, 1e9, "of seconds from 0.001 to 1000000000"))
        ->option_text("SECONDS");
    run.add_option("--log-level", logLevel,
                   "What the library logs to standard error: detail, info, warn or error")
        ->check(CLI::IsMember(LogLevels))
        ->capture_default_str();
}

nxLogLevelEnum GetLogLevel(const std::string& name)
{
    return nxLogLevelEnum(LogLevels.at(name));
}

namespace {

void AddPace(CLI::App& run, Arguments& arguments)
{
    nxRunOptions& options = arguments.run.options;
    run.add_flag("--watch-products", options.watchProducts,
                 "Take over price offsets and ratios that change in the file of --products during the run, "
                 "which does not repeat then");
    run.add_flag(
        "--watch", arguments.isWatching,
        "Run again whenever a script, a module, a parameter file, the products or the data change, and "
        "print what came out otherwise; Ctrl-C ends");
    run.add_option("--speed,-s", options.speed,
                   "Recorded seconds for each real one; without it as fast as it can")
        ->check(IsNumber(std::numeric_limits<double>::denorm_min(), HUGE_VAL, "above 0"))
        ->option_text("ABOVE 0");
}

void AddModels(CLI::App& run, Arguments& arguments)
{
    run.add_flag("--envelope", arguments.manner.isInEnvelope,
                 "Run under the other fill models and with a queue that only trades move, over bars under "
                 "the other --bar-fills and --bar-limits through, and with twice the latency, too, and print "
                 "what each comes to after the summary");
    AddRepeated(run, "--explain", arguments.run.options.explain,
                "Tell the story of the order with that number after the summary; may be repeated")
        ->type_name("ORDER_ID");
}

}  // namespace

int MakeRun(const RunManner& manner, nxRunOptions options)
{
    options.showProgress = isatty(STDERR_FILENO) != 0;
    options.interrupted = &GetInterrupted();
    options.shortOfMemory = &GetShortOfMemory();
    CatchSignals();
    return manner.isStrict ? RunStrictly(manner, std::move(options))
                           : RunHere(manner, std::move(options), std::cout);
}

void AddRunCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& run = *app.add_subcommand("run", "Run scripts over recorded market data");
    run.footer(
        "Each script is a job with a Lua state of its own; events reach the jobs in the order of the "
        "scripts.\n"
        "The scripts' log and the summary go to standard output and repeat to the byte; failures, progress\n"
        "and speed go to standard error. Ctrl-C ends the run properly: OnShutdown runs and the summary is\n"
        "printed.\n\n"
        "A file named - is standard input, once.\n"
        "Data files are CSV, plain or packed as .gz, .zst, .xz, .bz2 or .zip. Those of others are read as "
        "they are\n"
        "(docs/data.md); our own formats are told by their header row:\n"
        "  quotes  time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side   (an empty cell: "
        "unchanged)\n"
        "  depth   time,product,side,price,volume                                  (0 removes the level)\n"
        "  bars    time,product,open,high,low,close,volume");
    run.formatter(std::make_shared<RunFormatter>());
    AddGroup(run, "Scripts", [&] {
        AddScripts(run, arguments->run);
        run.add_flag("--check", arguments->manner.tellsFindings,
                     "Tell before the run how much 'algoserver check --no-run' finds in the scripts, and the "
                     "first three findings, on standard error; so it is on a terminal");
        AddSandbox(run, arguments->run.sandbox,
                   "nothing but trade, in a process of their own that reaches nothing else (strict)",
                   "10 under --sandbox strict, any under base");
    });
    AddGroup(run, "Data", [&] {
        AddData(run, arguments->run, true);
        AddPace(run, *arguments);
    });
    AddGroup(run, "Tests", [&] { AddScriptTests(run, arguments->tests, *run.get_option("--data")); });
    AddGroup(run, "Orders", [&] {
        AddExchange(run, arguments->run);
        AddModels(run, *arguments);
        AddAccount(run, arguments->run.options);
    });
    AddGroup(run, "Results", [&] { AddOutputs(run, arguments->run.options, arguments->manner.logLevel); });
    AddGroup(run, "Profile", [&] { AddProfile(run, arguments->run.options); });
    run.callback([arguments, &status] { status = Run(*arguments); });
}
