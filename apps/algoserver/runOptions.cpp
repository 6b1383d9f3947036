#include "apps/algoserver/runOptions.h"

#include <fmt/format.h>

#include <cmath>
#include <set>

#include "apps/algoserver/forms.h"

namespace {

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

}  // namespace

std::optional<std::string> RunArguments::Finish()
{
    if (auto error = jobs.Apply(options)) return error;
    if (!barTime.empty()) options.barsBearStart = barTime == "start";
    options.continueOnError = onError == "continue";
    options.memoryLimit = std::size_t{memoryLimit} << 20;
    options.callbackLimit = sandbox.GetCallbackLimit(sandbox.isStrict);
    return std::nullopt;
}

void AddScripts(CLI::App& run, RunArguments& arguments)
{
    nxRunOptions& options = arguments.options;
    nxRunArguments& jobs = arguments.jobs;
    run.add_option("script", jobs.scripts, "The Lua scripts, one for each job, in front of --data")
        ->option_text("SCRIPT... REQUIRED");
    AddRepeated(run, "--module,-m", options.modules,
                "Lua file to put in front of every script; may be repeated")
        ->type_name("FILE.lua");
    AddJobOptions(run, jobs);
    AddRepeated(run, "--at", jobs.changes, "Change a parameter at that recorded time; may be repeated")
        ->type_name("TIME [JOB/]NAME=VALUE");
    AddRepeated(run, "--events", jobs.eventFiles, "CSV file of parameter changes: time,parameter,value,tag")
        ->type_name("FILE.csv");
    AddRepeated(run, "--select", jobs.selections,
                "What the job, or every job, is launched on: product, side, volume, price, spread")
        ->type_name("[JOB/]KEY=VALUE,...");
    run.add_option("--account", jobs.account, "The account that scripts are told");
    run.add_option("--memory-limit", arguments.memoryLimit, "MiB that each script may hold; 0 for no limit")
        ->capture_default_str();
    run.add_option("--on-error", arguments.onError, "What to do when a callback fails: stop or continue")
        ->check(CLI::IsMember({"stop", "continue"}))
        ->capture_default_str();
}

void AddData(CLI::App& run, RunArguments& arguments, bool isRequired)
{
    nxRunOptions& options = arguments.options;
    run.add_option("--data,-d", options.data,
                   "Recorded data, merged by time: files from anywhere, folders, patterns in quotes, or the "
                   "data.toml of "
                   "an import")
        ->required(isRequired)
        ->type_name("FILE");
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
                   "strategies")
        ->type_name("FILE.toml");
    run.add_option("--bar-time", arguments.barTime,
                   "What the times in bars files are: the end of the bar, or its start")
        ->check(CLI::IsMember({"end", "start"}))
        ->capture_default_str();
    AddRepeated(run, "--bar-period", arguments.jobs.barPeriods,
                "How far apart the bars of that product, or of all others, are: 30s, 1m, 4h, 1d. Without it "
                "the first rows tell; may be repeated")
        ->type_name("[PRODUCT=]PERIOD");
    AddRepeated(run, "--adjustments", arguments.jobs.adjustmentFiles,
                "CSV file of dividends, splits, funding and rolls: time,product,kind,value; may be repeated")
        ->type_name("FILE.csv");
    run.add_flag("--lenient,-l", options.lenient, "Count and skip malformed rows instead of ending the run");
}

namespace {

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

}  // namespace

void AddExchange(CLI::App& run, RunArguments& arguments)
{
    nxExchangeOptions& exchange = arguments.options.exchange;
    AddBookRules(run, exchange);
    AddBarRules(run, exchange);
    run.add_option(
           "--impact", exchange.impact,
           "What taking costs beside its price: this times a day's volatility times the square root of "
           "the order's share of a day's volume; without it nothing")
        ->check(IsNumber(0, 1000, "from 0 to 1000"))
        ->option_text("COEFFICIENT");
    AddLatencies(run, arguments.jobs);
    AddSeed(run, exchange.seed, "For what is drawn by lot: latencies, peaks, and the scripts' math.random");
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

void AddRoundTrips(CLI::App& run, nxRunOptions& options)
{
    run.add_option_function<std::string>(
           "--round-trips",
           [&options](const std::string& name) {
               options.roundTrips = name == "fifo" ? nxMatching::Fifo : nxMatching::Average;
           },
           "Which lots a fill closes: the oldest (fifo), or a share of all at their average price (average)")
        ->check(CLI::IsMember({"fifo", "average"}))
        ->option_text("fifo|average [fifo]");
}

CLI::Option* AddStore(CLI::App& run, nxRunOptions& options)
{
    return run
        .add_option("--store", options.storeDirectory,
                    "Directory of the data stores; one server at a time. Without it scripts have none")
        ->type_name("DIR");
}
