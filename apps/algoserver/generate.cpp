#include "apps/algoserver/generate.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "apps/algoserver/arguments.h"
#include "host/report/nxOutputFile.h"
#include "host/report/nxProgressBar.h"
#include "host/run/nxRunFiles.h"
#include "host/run/nxRunOptions.h"
#include "host/synthetic/nxMarketGenerator.h"

namespace {

struct GenerateArguments
{
    nxMarketGeneratorOptions options;
    std::string kind = "quotes";
    std::string start = "20240108:14:30:00";
    std::string startPrice = "100.00";
    std::string tickSize = "0.01";
    std::string lotSize = "1";
    std::string output = "-";
};

int Refuse(const std::string& text)
{
    std::cerr << "algoserver generate: " << text << "\n";
    return static_cast<int>(nxRunResult::InputFailed);
}

int Generate(GenerateArguments& arguments)
{
    nxMarketGeneratorOptions& options = arguments.options;
    options.kind = arguments.kind == "depth" ? nxFeedKind::Depth : nxFeedKind::Quote;
    if (!nxDateTime::SetFromString(arguments.start, options.start).IsSuccess())
        return Refuse("--start " + arguments.start + " is no YYYYMMDD:HH:MM:SS");
    const struct
    {
        const char* name;
        const std::string& text;
        nxDecimal& value;
    } numbers[] = {{"--price", arguments.startPrice, options.startPrice},
                   {"--tick-size", arguments.tickSize, options.tickSize},
                   {"--lot-size", arguments.lotSize, options.lotSize}};
    for (const auto& number : numbers)
        if (!number.value.SetFromString(number.text, '.').IsSuccess())
            return Refuse(std::string(number.name) + " " + number.text + " is no decimal number");

    nxRunFiles files;
    files.AddOutput("--output", arguments.output);
    if (const auto clash = files.FindClash()) return Refuse(*clash);
    nxMarketGenerator generator(options);
    // Before the file is emptied.
    if (!generator.Check()) return Refuse(generator.GetFailure());
    nxOutputFile file("the day");
    if (const auto error = file.Open(arguments.output)) return Refuse(*error);
    nxProgressBar progress(std::cerr, isatty(STDERR_FILENO) != 0 && arguments.output != "-");
    const bool generated = generator.Generate(
        [&file](std::string_view text) {
            file.Write(text);
            return !file.HasFailed();
        },
        [&](unsigned int seconds) {
            if (progress.IsEnabled())
                progress.Show(std::to_string(seconds) + " of " + std::to_string(options.durationSeconds) +
                              " seconds");
        });
    progress.Erase();
    if (const auto error = file.Close()) return Refuse(*error);
    if (!generated) return Refuse(generator.GetFailure());
    const nxMarketGeneratorStatistics& statistics = generator.GetStatistics();
    std::cerr << statistics.rows << " rows from " << statistics.limitOrders << " limit orders, "
              << statistics.marketOrders << " market orders and " << statistics.cancellations
              << " cancellations\n";
    return 0;
}

}  // namespace

void AddGenerateCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<GenerateArguments>();
    nxMarketGeneratorOptions& options = arguments->options;
    CLI::App* generate = app.add_subcommand("generate", "Write a synthetic trading day as CSV");
    generate->footer(
        "The market is a limit order book without intelligence: limit orders, market orders and "
        "cancellations\n"
        "arrive as Poisson processes with rates by distance from the best price. The same options give the "
        "same\n"
        "bytes on every machine.");
    AddSeed(*generate, options.seed, "Seed of the random numbers");
    generate->add_option("--kind,-k", arguments->kind, "What to write: quotes (with trades) or depth")
        ->check(CLI::IsMember({"quotes", "depth"}))
        ->capture_default_str();
    generate->add_option("--output,-o", arguments->output, "File to write; - is standard output")
        ->type_name("FILE")
        ->capture_default_str();
    generate->add_option("--product", options.product, "Product name")->capture_default_str();
    generate->add_option("--start", arguments->start, "Start of the day, UTC")->capture_default_str();
    generate->add_option("--duration", options.durationSeconds, "Seconds")->capture_default_str();
    generate->add_option("--price", arguments->startPrice, "Start price")->capture_default_str();
    generate->add_option("--tick-size", arguments->tickSize, "Tick size")->capture_default_str();
    generate->add_option("--lot-size", arguments->lotSize, "Size written for one lot")->capture_default_str();
    generate->add_option("--min-lots", options.minLots, "Smallest order")->capture_default_str();
    generate->add_option("--max-lots", options.maxLots, "Largest order")->capture_default_str();
    generate->add_option("--rate", options.rateScale, "Times the published rates, which are per minute")
        ->capture_default_str();
    generate->callback([arguments, &status] { status = Generate(*arguments); });
}
