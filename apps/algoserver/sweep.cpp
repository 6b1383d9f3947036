#include "apps/algoserver/sweep.h"

#include <fmt/format.h>
#include <unistd.h>

#include <charconv>
#include <fstream>
#include <iostream>
#include <thread>

#include "apps/algoserver/signals.h"
#include "apps/algoserver/sweepCluster.h"
#include "host/feed/nxSha256.h"
#include "host/jobs/nxDataStores.h"
#include "host/run/nxRunFiles.h"
#include "host/sweep/nxPlanFile.h"
#include "host/sweep/nxSweep.h"

namespace {

struct SweepArguments
{
    SweepRuns runs;
    std::string planFile;
    std::vector<nxPlanEntry> entries;  // of the command line
    std::string slice;
    unsigned int memory = 0;  // MiB
    nxSweepOptions sweep;
    SlurmArguments slurm;
};

int Refuse(const std::string& text)
{
    std::cerr << "algoserver sweep: " << text << "\n";
    return static_cast<int>(nxRunResult::InputFailed);
}

// Half of what the system can give without moving other programs out; 0: it does not say.
unsigned long long GetFreeMemory()
{
    std::ifstream file("/proc/meminfo");
    std::string name, unit;
    for (unsigned long long kibibytes = 0; file >> name >> kibibytes >> unit;)
        if (name == "MemAvailable:") return kibibytes * 1024 / 2;
    return 0;
}

unsigned int GetCores()
{
    return std::max(1u, std::thread::hardware_concurrency());
}

std::string CheckSlice(const std::string& text)
{
    std::size_t slice = 0, slices = 0;
    const char* const end = text.data() + text.size();
    const auto [slash, error] = std::from_chars(text.data(), end, slice);
    const bool isPair = error == std::errc() && slash != end && *slash == '/';
    const auto [rest, otherError] =
        isPair ? std::from_chars(slash + 1, end, slices) : std::from_chars_result{slash, error};
    return isPair && otherError == std::errc() && rest == end && slice < slices
               ? std::string()
               : text + " is no K/N with K below N, such as 0/8";
}

void SetSlice(const std::string& text, nxSweepOptions& sweep)
{
    if (text.empty()) return;
    const std::size_t slash = text.find('/');
    sweep.slice = std::stoul(text.substr(0, slash));
    sweep.slices = std::stoul(text.substr(slash + 1));
}

// Each batch reads them anew.
std::optional<std::string> FindReadOnce(const nxRunOptions& options)
{
    std::vector<std::string> files = options.data;
    files.insert(files.end(), options.modules.begin(), options.modules.end());
    for (const nxJobOptions& job : options.jobs)
        files.push_back(job.script);
    for (const std::string& file : files)
        if (!nxRunFiles::CanBeReadAgain(file))
            return fmt::format("a sweep reads everything several times, and {} can be read only once", file);
    return std::nullopt;
}

// What the plan's file says goes behind what the command line does.
std::optional<std::string> TakePlan(SweepArguments& arguments)
{
    std::vector<nxPlanEntry>& entries = arguments.sweep.entries;
    nxFeedError error;
    if (!arguments.planFile.empty() && !nxPlanFile::Read(arguments.planFile, entries, error))
        return error.GetText();
    entries.insert(entries.end(), arguments.entries.begin(), arguments.entries.end());
    if (entries.empty())
        return "no plan: --vary NAME=VALUES, or --plan FILE.toml, tells what differs from run to run";
    return std::nullopt;
}

bool PartsTime(const std::vector<nxPlanEntry>& entries)
{
    return std::ranges::any_of(entries, [](const nxPlanEntry& entry) {
        return entry.key == "walk" || entry.key == "folds" || entry.key == "holdout";
    });
}

int Submit(const CLI::App& command, SweepArguments& arguments)
{
    nxSweepOptions& sweep = arguments.sweep;
    sweep.isDry = sweep.wantsIdentity = true;
    nxSweep::Forecast forecast;
    if (const auto fault = nxSweep(sweep, std::cout, std::cerr).Foresee(forecast)) return Refuse(*fault);
    const double seconds = forecast.secondsOfRun * static_cast<double>(forecast.parts);
    return SubmitSweep(
        command, arguments.slurm,
        {sweep.file, nxSha256::GetOfText(forecast.identity), forecast.points, seconds, sweep.restarts});
}

std::optional<unsigned long long> CountRuns(const std::filesystem::path& file)
{
    std::error_code ignored;
    nxSweepStore store;
    // One that is being written is not waited for.
    if (!std::filesystem::exists(file, ignored) || store.Open(file.string(), 0)) return std::nullopt;
    return store.CountRuns();
}

int Sweep(const CLI::App& command, SweepArguments& arguments)
{
    nxSweepOptions& sweep = arguments.sweep;
    if (arguments.runs.run.jobs.scripts.empty())
        return Refuse("no script; it stands in front of --data, which takes every name behind it");
    if (const auto error = TakePlan(arguments)) return Refuse(*error);
    arguments.runs.run.jobs.mayBeginLater = PartsTime(sweep.entries);
    sweep.make = arguments.runs.GetMake();
    nxRunOptions common;
    if (const auto error = sweep.make({}, common)) return Refuse(*error);
    if (const auto error = FindReadOnce(common)) return Refuse(*error);
    SetSlice(arguments.slice, sweep);
    sweep.crew.memory = arguments.memory != 0 ? (1ull << 20) * arguments.memory : GetFreeMemory();
    sweep.crew.worker.isStrict = arguments.runs.run.sandbox.isStrict;
    sweep.crew.worker.callbackLimit = common.callbackLimit;
    sweep.crew.interrupted = &GetInterrupted();
    sweep.showsProgress = isatty(STDERR_FILENO) != 0;
    CatchSignals();
    if (arguments.slurm.isAsked) return Submit(command, arguments);
    return static_cast<int>(nxSweep(sweep, std::cout, std::cerr).Run());
}

// An option that is an entry of the plan; a flag where it takes no value.
void AddEntry(CLI::App& command, const char* option, const char* key, std::vector<nxPlanEntry>& entries,
              const char* type, const char* help)
{
    const std::string place = std::string(option).substr(0, std::string(option).find(','));
    const auto add = [&entries, place, key](const std::string& value) {
        entries.push_back({key, "", {value}, false, fmt::format("{} {}", place, value)});
    };
    if (type == nullptr) {
        command.add_flag_callback(
            option, [add] { add("true"); }, help);
        return;
    }
    // Each time on its own: what follows may be a script.
    command
        .add_option_function<std::vector<std::string>>(
            option,
            [add](const std::vector<std::string>& values) {
                for (const std::string& value : values)
                    add(value);
            },
            help)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false)
        ->type_name(type);
}

// "fast=5:50:5"
void AddDimension(CLI::App& command, const char* option, const char* key, std::vector<nxPlanEntry>& entries,
                  const char* type, const char* help)
{
    command
        .add_option_function<std::vector<std::string>>(
            option,
            [&entries, option, key](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) {
                    const std::size_t equals = text.find('=');
                    if (equals == 0 || equals == std::string::npos)
                        throw CLI::ValidationError(option, text + " is no NAME=VALUES");
                    entries.push_back({key,
                                       text.substr(0, equals),
                                       {text.substr(equals + 1)},
                                       false,
                                       fmt::format("{} {}", option, text)});
                }
            },
            help)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false)
        ->type_name(type);
}

void AddPlan(CLI::App& command, SweepArguments& arguments)
{
    std::vector<nxPlanEntry>& entries = arguments.entries;
    command.add_option("--plan", arguments.planFile, "TOML file of the plan; options go before it")
        ->type_name("FILE.toml");
    AddDimension(command, "--vary", "parameters", entries, "NAME=VALUES",
                 "What a parameter goes through: 5:50:5, 20,50,100 or 0.001:1:log7; may be repeated");
    AddDimension(command, "--vary-option", "options", entries, "OPTION=VALUES",
                 "What an option of the runs goes through, by its long name, such as fills=queue,touch; also "
                 "script and data; may be repeated");
    AddEntry(command, "--condition", "conditions", entries, "CONDITION",
             "What the values of a run must satisfy, such as \"fast < slow\"; may be repeated");
    AddEntry(command, "--maximise", "maximise", entries, "EXPRESSION",
             "What makes a run the best: an expression of measures; without it sharpe");
    AddEntry(command, "--minimise", "minimise", entries, "EXPRESSION", "The same, the lower the better");
    AddEntry(command, "--constraint", "constraints", entries, "CONDITION",
             "What the measures of the best must satisfy, such as \"roundTrips > 100\"; may be repeated");
    AddEntry(command, "--random", "random", entries, "COUNT",
             "So many random points in place of all combinations");
    AddEntry(command, "--sobol", "sobol", entries, "COUNT", "So many points of the Sobol sequence");
    AddEntry(command, "--scramble", "scramble", entries, nullptr, "Scramble them by the seed of the plan");
    AddEntry(command, "--search", "search", entries, "tpe|cmaes",
             "Adaptive search, which learns from run to run");
    AddEntry(command, "--runs", "runs", entries, "COUNT", "How many runs it makes");
    AddEntry(command, "--plan-seed", "seed", entries, "NUMBER",
             "For what the plan draws by lot; 1 without it");
}

void AddTime(CLI::App& command, SweepArguments& arguments)
{
    std::vector<nxPlanEntry>& entries = arguments.entries;
    AddEntry(command, "--walk", "walk", entries, "TRAIN:TEST",
             "Walk-forward: choose over so much time, judge over the time after it, go on: 6m:1m");
    AddEntry(command, "--anchored", "anchored", entries, nullptr, "Each train begins with the data");
    AddEntry(command, "--folds", "folds", entries, "COUNT", "Cross-validation by so many folds of time");
    AddEntry(command, "--purge", "purge", entries, "LENGTH",
             "What does not train on either side of a test: 5d");
    AddEntry(command, "--embargo", "embargo", entries, "LENGTH",
             "What does not train after a fold beside that");
    AddEntry(command, "--holdout", "holdout", entries, "SHARE|LENGTH",
             "The end of the data that is run once, for the best alone: 20% or 3m");
}

void AddRunning(CLI::App& command, SweepArguments& arguments)
{
    nxSweepOptions& sweep = arguments.sweep;
    sweep.crew.workers = GetCores();
    command.add_option("-o,--output", sweep.file, "File of the results, from which the same command goes on")
        ->type_name("FILE.db")
        ->capture_default_str();
    command
        .add_option("-j,--jobs", sweep.crew.workers,
                    "How many processes make runs at one time; without it all cores")
        ->check(CLI::Range(1u, 4096u))
        ->option_text("COUNT");
    command
        .add_option("--batch", sweep.crew.largestBatch,
                    "How many runs a process makes over one reading of the data at most")
        ->check(CLI::Range(1u, 4096u))
        ->option_text("COUNT [32]");
    command
        .add_option("--memory", arguments.memory,
                    "MiB that all processes may take together; without it half of what is free")
        ->check(CLI::Range(1u, 1u << 30))
        ->option_text("MIB");
    command
        .add_option("--currency", sweep.crew.worker.currency, "Whose money counts where runs have several")
        ->type_name("NAME");
    command.add_flag("--dry-run", sweep.isDry, "Tell what would be run and how long it takes, after one run");
    command.add_flag("--count", sweep.isCount, "Print the number of points of the plan, and run nothing");
    command.add_flag("--restart", sweep.restarts, "Begin anew: what the file of the results holds is lost");
    command.add_flag("--retry", sweep.triesFailedAgain, "Make runs that failed once more");
    command.add_flag("--allow-unread", sweep.allowsUnread,
                     "Go on where no script reads a parameter of the plan");
    command
        .add_option("--slice", arguments.slice,
                    "Make but the K-th of N parts of the runs, from 0, and choose no best")
        ->check(CLI::Validator(CheckSlice, ""))
        ->type_name("K/N");
    AddRepeated(command, "--take", sweep.taken,
                "Take the runs of that file over, which a slice has made; may be repeated")
        ->type_name("FILE.db");
}

class SweepFormatter : public CLI::Formatter
{
public:
    std::string make_usage(const CLI::App* app, std::string name) const override
    {
        // Its own commands, status and the like, have the formatter from it.
        if (app->get_name() != "sweep") return CLI::Formatter::make_usage(app, name);
        return "Usage: " + name + " [OPTIONS] SCRIPT... --data FILE... --vary NAME=VALUES\n";
    }
};

}  // namespace

nxSweepRuns::Make SweepRuns::GetMake() const
{
    return [common = run](const std::vector<std::pair<std::string, std::string>>& values,
                          nxRunOptions& made) -> std::optional<std::string> {
        SweepRuns own;
        own.run = common;
        CLI::App command;
        own.AddOptions(command);
        std::vector<std::string> arguments;
        for (const auto& [name, value] : values) {
            const std::string option = name == "script" ? name : "--" + name;
            if (command.get_option_no_throw(option) == nullptr)
                return "the plan's option " + name + ": there is none of that name";
            if (name != "script") arguments.push_back(option);
            arguments.push_back(value);
        }
        std::ranges::reverse(arguments);  // as the library wants them
        try {
            command.parse(arguments);
        } catch (const CLI::ParseError& error) {
            return error.what();
        }
        if (auto error = own.run.Finish()) return error;
        nxRunOptions& options = own.run.options;
        options.profile = own.run.sandbox.isStrict ? nxScriptProfile::Strict : nxScriptProfile::Base;
        if (!options.storeDirectory.empty())
            options.storeImage = nxDataStores::TakeImage(options.storeDirectory);
        made = std::move(own.run.options);
        return std::nullopt;
    };
}

void SweepRuns::AddOptions(CLI::App& command)
{
    AddGroup(command, "Scripts", [&] {
        AddScripts(command, run);
        AddSandbox(command, run.sandbox, "nothing but trade, in processes that reach nothing else (strict)",
                   "10 under --sandbox strict, any under base");
        AddStore(command, run.options)
            ->description("Directory of data stores that each run begins with a copy of");
    });
    AddGroup(command, "Data", [&] { AddData(command, run, false); });
    AddGroup(command, "Orders", [&] {
        AddExchange(command, run);
        AddAccount(command, run.options);
        AddRoundTrips(command, run.options);
    });
}

std::optional<std::string> SweepRuns::SetFromArguments(const std::vector<std::string>& arguments)
{
    SweepArguments ignored;
    CLI::App command;
    AddOptions(command);
    AddPlan(command, ignored);
    AddTime(command, ignored);
    AddRunning(command, ignored);
    AddSlurmOptions(command, ignored.slurm);
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    try {
        command.parse(reversed);
    } catch (const CLI::ParseError& error) {
        return error.what();
    }
    run.jobs.mayBeginLater = true;
    return std::nullopt;
}

void AddSweepCommand(CLI::App& app, const std::vector<std::string>& all, int& status)
{
    const auto arguments = std::make_shared<SweepArguments>();
    arguments->sweep.file = "sweep.db";
    arguments->sweep.objective = "sharpe";
    CLI::App& command =
        *app.add_subcommand("sweep", "Run scripts with many parameters, and judge the best of them");
    command.footer(
        "Makes the runs of a plan in several processes, over data that are read once for many of them, and "
        "keeps\n"
        "their measures in a file. The same command goes on where it was ended; 'algoserver report sweep.db\n"
        "-o sweep.html' shows the file. How VALUES, conditions and expressions are written: docs/sweep.md.");
    command.formatter(std::make_shared<SweepFormatter>());
    AddGroup(command, "Plan", [&] { AddPlan(command, *arguments); });
    AddGroup(command, "Time", [&] { AddTime(command, *arguments); });
    AddGroup(command, "Running", [&] { AddRunning(command, *arguments); });
    arguments->runs.AddOptions(command);
    AddSlurmOptions(command, arguments->slurm);
    AddClusterCommands(command, status, CountRuns);
    command.callback([arguments, all, &command, &status] {
        if (!command.get_subcommands().empty()) return;
        arguments->sweep.command.assign(all.begin() + (all.empty() ? 0 : 1), all.end());
        status = Sweep(command, *arguments);
    });
}
