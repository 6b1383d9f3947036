#include "apps/algoserver/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <set>

#include "apps/algoserver/arguments.h"
#include "apps/algoserver/forms.h"
#include "apps/algoserver/memory.h"
#include "apps/algoserver/signals.h"
#include "base/log/nxConsoleLogDevice.h"
#include "base/log/nxLogEntriesQueue.h"
#include "base/log/nxLogManager.h"
#include "host/check/nxScriptReview.h"
#include "host/run/nxRun.h"
#include "host/run/nxRunArguments.h"
#include "host/run/nxRunEnvelope.h"
#include "host/run/nxRunSandbox.h"
#include "host/sandbox/nxSharedOutput.h"

namespace {

struct RunArguments
{
    nxRunOptions options;
    nxRunArguments jobs;
    bool envelope = false;
    std::string onError = "stop";
    std::string barTime;
    std::string logLevel = "error";
    unsigned int memoryLimit = 0;  // MiB
    SandboxArguments sandbox;
};

const std::map<std::string, unsigned int> LogLevels = {{"detail", nxLogLevel_Detail},
                                                       {"info", nxLogLevel_Info},
                                                       {"warn", nxLogLevel_Warn},
                                                       {"error", nxLogLevel_Error}};

// "queue (behind what the market shows), cross (only when traded through) or touch (at once)"
template <class Model>
std::string DescribeModels()
{
    std::string text;
    for (const Model& model : Model::GetAll()) {
        const bool isLast = &model == &Model::GetAll().back();
        text += fmt::format("{}{} ({})", text.empty() ? "" : isLast ? " or " : ", ", model.name, model.help);
    }
    return text;
}

// "queue|cross|touch [queue]"
template <class Model>
std::string ListModels()
{
    std::string text;
    for (const Model& model : Model::GetAll()) {
        text += fmt::format("{}{}", text.empty() ? "" : "|", model.name);
        if constexpr (requires { model.takesPower; }) text += model.takesPower ? "[:POWER]" : "";
    }
    return fmt::format("{} [{}]", text, Model::GetAll().front().name);
}

// An option that names one of a table of models or rules; take(model) gets it.
template <class Model, class Take>
void AddModel(CLI::App& run, const std::string& option, Take take, const std::string& help)
{
    std::set<std::string> names;
    for (const Model& model : Model::GetAll())
        names.insert(model.name);
    run.add_option_function<std::string>(
           option, [take](const std::string& name) { take(*Model::Find(name)); },
           help + DescribeModels<Model>())
        ->check(CLI::IsMember(names))
        ->option_text(ListModels<Model>());
}

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
int RunHere(const RunArguments& arguments, nxRunOptions options, std::ostream& out)
{
    nxScriptReview review(options.jobs, options.modules);
    options.getNotes = [&review] { return review.GetNotes(); };
    nxLogManager::SetLevel(nxLogLevelEnum(LogLevels.at(arguments.logLevel)));
    nxConsoleLogDevice console;
    nxLogManager::GetLogEntriesQueue().AddDevice(&console);
    const nxRunResult result = arguments.envelope ? nxRunEnvelope::Run(options, out, std::cerr)
                                                  : nxRun(options, out, std::cerr).Run();
    const bool written = !out.flush().fail();
    nxLogManager::GetLogEntriesQueue().RemoveDevice(&console);
    return written ? static_cast<int>(result) : Refuse("standard output cannot be written");
}

// Before any thread is made: there is none in the child but the one that forks.
int RunStrictly(const RunArguments& arguments, nxRunOptions options)
{
    if (const std::string obstacle = nxRunSandbox::FindObstacle(options); !obstacle.empty())
        return Refuse(obstacle);
    nxRunGuard guard(nxRunSandbox::GetGuardOptions(options), std::cerr);
    if (const auto status = guard.Start()) return *status;
    nxRunSandbox::Share(options, guard.GetPage());
    nxSharedOutput output(guard.GetPage().output);
    return RunHere(arguments, std::move(options), output.GetStream());
}

int Run(RunArguments& arguments)
{
    nxRunOptions& options = arguments.options;
    if (arguments.jobs.scripts.empty())
        return Refuse("no script; it stands in front of --data, which takes every name behind it");
    if (const auto error = arguments.jobs.Apply(options)) {
        std::cerr << *error << "\n";
        return static_cast<int>(nxRunResult::InputFailed);
    }
    if (arguments.envelope)
        if (const std::string obstacle = nxRunEnvelope::FindObstacle(options); !obstacle.empty())
            return Refuse(obstacle);
    if (!arguments.barTime.empty()) options.barsBearStart = arguments.barTime == "start";
    options.continueOnError = arguments.onError == "continue";
    options.memoryLimit = std::size_t{arguments.memoryLimit} << 20;
    options.showProgress = isatty(STDERR_FILENO) != 0;
    options.interrupted = &GetInterrupted();
    options.callbackLimit = arguments.sandbox.GetCallbackLimit(arguments.sandbox.isStrict);
    options.shortOfMemory = &GetShortOfMemory();
    CatchSignals();
    return arguments.sandbox.isStrict ? RunStrictly(arguments, options)
                                      : RunHere(arguments, options, std::cout);
}

void AddJobs(CLI::App& run, RunArguments& arguments)
{
    nxRunOptions& options = arguments.options;
    nxRunArguments& jobs = arguments.jobs;
    run.add_option("script", jobs.scripts, "The Lua scripts, one for each job, in front of --data")
        ->option_text("SCRIPT... REQUIRED");
    AddRepeated(run, "--module,-m", options.modules,
                "Lua file to put in front of every script; may be repeated");
    AddJobOptions(run, jobs);
    AddRepeated(run, "--at", jobs.changes, "Change a parameter at that recorded time; may be repeated")
        ->type_name("TIME [JOB/]NAME=VALUE");
    AddRepeated(run, "--events", jobs.eventFiles, "CSV file of parameter changes: time,parameter,value,tag");
    AddRepeated(run, "--select", jobs.selections,
                "What the job, or every job, is launched on: product, side, volume, price, spread")
        ->type_name("[JOB/]KEY=VALUE,...");
    run.add_option("--account", jobs.account, "The account that scripts are told");
    run.add_option("--memory-limit", arguments.memoryLimit, "MiB that each script may hold; 0 for no limit")
        ->capture_default_str();
    AddSandbox(run, arguments.sandbox,
               "nothing but trade, in a process of their own that reaches nothing else (strict)",
               "10 under --sandbox strict, any under base");
    run.add_option("--on-error", arguments.onError, "What to do when a callback fails: stop or continue")
        ->check(CLI::IsMember({"stop", "continue"}))
        ->capture_default_str();
}

void AddData(CLI::App& run, RunArguments& arguments)
{
    nxRunOptions& options = arguments.options;
    run.add_option("--data,-d", options.data,
                   "Recorded data, merged by time: files from anywhere, folders, patterns in quotes, or the "
                   "data.toml of "
                   "an import")
        ->required();
    AddFormOptions(run, arguments.jobs.form);
    run.add_flag("--round-volumes", options.roundsVolumes,
                 "Round sizes to whole lots; the summary tells how much is lost");
    run.add_option("--from", arguments.jobs.from, "Begin at that recorded time")->type_name("TIME");
    run.add_option("--to", arguments.jobs.to, "End there")->type_name("TIME");
    run.add_option("--warmup", arguments.jobs.warmup,
                   "How much of the data before --from collections and indicators know already")
        ->type_name("PERIOD");
    run.add_option("--products,-p", options.productFile,
                   "TOML file that describes products: tick size, lot size, point value, currency, legs of "
                   "strategies");
    run.add_flag("--watch-products", options.watchProducts,
                 "Take over price offsets and ratios that change in the file of --products during the run, "
                 "which does not repeat then");
    run.add_option("--bar-time", arguments.barTime,
                   "What the times in bars files are: the end of the bar, or its start")
        ->check(CLI::IsMember({"end", "start"}))
        ->capture_default_str();
    AddRepeated(run, "--bar-period", arguments.jobs.barPeriods,
                "How far apart the bars of that product, or of all others, are: 30s, 1m, 4h, 1d. Without it "
                "the first rows tell; may be repeated")
        ->type_name("[PRODUCT=]PERIOD");
    AddRepeated(run, "--adjustments", arguments.jobs.adjustmentFiles,
                "CSV file of dividends, splits, funding and rolls: time,product,kind,value; may be repeated");
    run.add_flag("--lenient,-l", options.lenient, "Count and skip malformed rows instead of ending the run");
    run.add_option("--speed,-s", options.speed,
                   "Recorded seconds for each real one; without it as fast as it can")
        ->check(IsNumber(std::numeric_limits<double>::denorm_min(), HUGE_VAL, "above 0"))
        ->option_text("ABOVE 0");
}

void AddLatencies(CLI::App& run, nxRunArguments& arguments)
{
    run.add_option(
           "--latency", arguments.latency,
           "What a request takes to the exchange, and its answer back, such as 5ms or 250us; without a "
           "unit milliseconds. A file tells recorded ones: time,send,ack")
        ->option_text("DURATION|MIN..MAX|FILE.csv");
    run.add_option("--answer-latency", arguments.answerLatency,
                   "What an answer takes, where it is not what --latency says")
        ->option_text("DURATION|MIN..MAX|FILE.csv");
    run.add_option("--feed-latency", arguments.feedLatency,
                   "How much later market data reach the scripts than the exchange")
        ->option_text("DURATION|MIN..MAX");
}

void AddBookRules(CLI::App& run, nxExchangeOptions& exchange)
{
    AddModel<nxFillModel>(
        run, "--fills", [&exchange](const nxFillModel& model) { exchange.fills = &model; },
        "How resting orders are filled: ");
    run.add_option_function<std::string>(
           "--queue-model",
           [&exchange](const std::string& text) {
               if (!exchange.queue.SetFromText(text))
                   throw CLI::ValidationError("--queue-model",
                                              text + " is none of " + ListModels<nxQueueModel>());
           },
           "Where those stood who cancel in the queue of a resting order: " + DescribeModels<nxQueueModel>())
        ->option_text(ListModels<nxQueueModel>());
    AddModel<nxSelfTradeRule>(
        run, "--self-trade", [&exchange](const nxSelfTradeRule& rule) { exchange.selfTrade = rule.rule; },
        "When an order would trade with a resting one of the same script: ");
    run.add_option_function<std::string>(
           "--beyond", [&exchange](const std::string& name) { exchange.walksBeyond = name == "walk"; },
           "Where the data show the best price alone, the rest of a MARKET order goes on a tick worse for "
           "each further mean size of that price (walk), or waits for what is shown next (wait)")
        ->check(CLI::IsMember({"walk", "wait"}))
        ->option_text("walk|wait [walk]");
    run.add_option_function<double>(
           "--late-trades",
           [&exchange](double milliseconds) {
               exchange.lateTrades = std::llround(milliseconds * nxTime::NanosecondsPerMillisecond);
           },
           "Milliseconds by which a trade may be recorded after the change of size that it caused and still "
           "count once")
        ->check(IsNumber(0, 3'600'000, "from 0 to 3600000"))
        ->option_text("MS [100]");
}

void AddBarRules(CLI::App& run, nxExchangeOptions& exchange)
{
    AddModel<nxBarModel>(
        run, "--bar-fills", [&exchange](const nxBarModel& model) { exchange.bars.model = &model; },
        "With bars: where orders are filled that a bar meets at its open or by their stop: ");
    run.add_option_function<std::string>(
           "--bar-limits",
           [&exchange](const std::string& name) { exchange.bars.isThrough = name == "through"; },
           "With bars: what fills a limit that rests: touch (the range comes to its price) or through (it "
           "goes beyond)")
        ->check(CLI::IsMember({"touch", "through"}))
        ->option_text("touch|through [touch]");
    run.add_option("--participation", exchange.participation,
                   "With bars: the share of a bar's volume that orders can have; without it any")
        ->check(CLI::Range(1u, 100u))
        ->option_text("PERCENT");
}

void AddExchange(CLI::App& run, RunArguments& arguments)
{
    nxExchangeOptions& exchange = arguments.options.exchange;
    AddBookRules(run, exchange);
    AddBarRules(run, exchange);
    run.add_flag("--envelope", arguments.envelope,
                 "Run under the other fill models and with a queue that only trades move, over bars under "
                 "the other --bar-fills and --bar-limits through, and with twice the latency, too, and print "
                 "what each comes to after the summary");
    run.add_option(
           "--impact", exchange.impact,
           "What taking costs beside its price: this times a day's volatility times the square root of "
           "the order's share of a day's volume; without it nothing")
        ->check(IsNumber(0, 1000, "from 0 to 1000"))
        ->option_text("COEFFICIENT");
    AddRepeated(run, "--explain", arguments.options.explain,
                "Tell the story of the order with that number after the summary; may be repeated")
        ->type_name("ORDER_ID");
    AddLatencies(run, arguments.jobs);
    AddSeed(run, exchange.seed, "For what is drawn by lot: latencies, peaks, and the scripts' math.random");
}

void AddResults(CLI::App& run, nxRunOptions& options)
{
    run.add_option(
        "--json", options.jsonFile,
        "JSON file to write the result to: measures, equity, round trips, orders, log; - is standard "
        "output, and then all else goes to standard error");
    run.add_option("--report", options.reportFile,
                   "HTML file to write the result to as a page, which a browser opens without a network")
        ->type_name("FILE.html");
    run.add_option("--trades", options.tradesFile, "CSV file to write the round trips to")
        ->type_name("FILE.csv");
    run.add_option("--equity", options.equityFile, "CSV file to write the equity over time to")
        ->type_name("FILE.csv");
    run.add_option_function<std::string>(
           "--round-trips",
           [&options](const std::string& name) {
               options.roundTrips = name == "fifo" ? nxMatching::Fifo : nxMatching::Average;
           },
           "Which lots a fill closes: the oldest (fifo), or a share of all at their average price (average)")
        ->check(CLI::IsMember({"fifo", "average"}))
        ->option_text("fifo|average [fifo]");
}

void AddAccount(CLI::App& run, nxRunOptions& options)
{
    CLI::Option* const capital = run.add_option_function<std::string>(
        "--capital",
        [&options](const std::string& text) {
            if (!options.capital.SetFromString(text).IsSuccess() || options.capital <= nxDecimalZero)
                throw CLI::ValidationError("--capital", text + " is no amount above 0");
        },
        "The money that each job begins with, in each currency: for its returns and its margin; without it "
        "measures that need it are left out");
    capital->option_text("AMOUNT");
    run.add_option_function<std::string>(
           "--margin",
           [&options](const std::string& name) {
               options.margin = name == "refuse" ? nxMarginRule::Refuse
                                : name == "tell" ? nxMarginRule::Tell
                                                 : nxMarginRule::Off;
           },
           "Orders beyond the buying power of --capital are refused, or let through and told")
        ->check(CLI::IsMember({"refuse", "tell", "off"}))
        ->needs(capital)
        ->option_text("refuse|tell|off [tell]");
}

void AddOutputs(CLI::App& run, RunArguments& arguments)
{
    nxRunOptions& options = arguments.options;
    run.add_option("--record", options.recordFile,
                   "JSON Lines file to write all that leaves the scripts to; - is standard output, and then "
                   "all else goes to standard error");
    run.add_option(
           "--equity-step", options.equityStep,
           "Change of a job's profit in a currency that --record tells; without it that at the end of "
           "each day")
        ->check(IsNumber(std::numeric_limits<double>::denorm_min(), HUGE_VAL, "above 0"))
        ->option_text("AMOUNT");
    AddResults(run, options);
    run.add_option("--store", options.storeDirectory,
                   "Directory of the data stores; one server at a time. Without it scripts have none")
        ->type_name("DIR");
    run.add_option("--store-every", options.storeEvery,
                   "Recorded seconds between saves of the stores; without it when jobs and the run end")
        ->check(IsNumber(0.001, 1e9, "of seconds from 0.001 to 1000000000"))
        ->option_text("SECONDS");
    run.add_option("--log-level", arguments.logLevel,
                   "What the library logs to standard error: detail, info, warn or error")
        ->check(CLI::IsMember(LogLevels))
        ->capture_default_str();
}

// The options that add() adds stand under that heading of --help.
template <class Add>
void AddGroup(CLI::App& run, const std::string& heading, Add add)
{
    const std::size_t before = run.get_options().size();
    add();
    std::vector<CLI::Option*> options = run.get_options();
    for (std::size_t i = before; i < options.size(); ++i)
        options[i]->group(heading);
}

}  // namespace

void AddRunCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<RunArguments>();
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
    AddGroup(run, "Scripts", [&] { AddJobs(run, *arguments); });
    AddGroup(run, "Data", [&] { AddData(run, *arguments); });
    AddGroup(run, "Orders", [&] {
        AddExchange(run, *arguments);
        AddAccount(run, arguments->options);
    });
    AddGroup(run, "Results", [&] { AddOutputs(run, *arguments); });
    run.callback([arguments, &status] { status = Run(*arguments); });
}
