#include "host/run/nxRunSettings.h"

#include <fmt/format.h>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxFeedTime.h"
#include "host/feed/nxSha256.h"

namespace {

std::string GetMilliseconds(long long nanoseconds)
{
    return nxStringHelper::GetAsString(static_cast<double>(nanoseconds) / nxTime::NanosecondsPerMillisecond) +
           "ms";
}

std::string GetText(const nxLatency& latency)
{
    if (latency.samples != nullptr) {
        std::string text;
        for (const nxLatency::Sample& sample : *latency.samples)
            text += fmt::format("{} {}\n", sample.time, sample.duration * latency.factor);
        return "recorded " + nxSha256::GetOfText(text);
    }
    if (latency.least == latency.most) return GetMilliseconds(latency.least);
    return GetMilliseconds(latency.least) + ".." + GetMilliseconds(latency.most);
}

std::string GetText(const nxJobSelection& selection)
{
    return fmt::format("product={},side={},volume={},price={},spread={}", selection.product, selection.side,
                       selection.volume.GetAsString(), selection.price.GetAsString(), selection.spread);
}

std::string GetChanges(const nxRunOptions& options)
{
    if (options.changes.empty()) return "none";
    std::string text;
    for (const nxParameterChange& change : options.changes)
        text += fmt::format("{} {} {}={} {}\n", change.time, change.job ? options.jobs[*change.job].name : "",
                            change.name, change.value, change.tag);
    return fmt::format("{}, {}", options.changes.size(), nxSha256::GetOfText(text));
}

std::string GetAdjustments(const nxRunOptions& options)
{
    if (options.adjustments.empty()) return "none";
    std::string text;
    for (const nxAdjustment& each : options.adjustments)
        text += fmt::format("{} {} {} {} {}:{}\n", each.time, each.product, nxGetName(each.kind),
                            each.value.GetAsString(), each.newLots, each.oldLots);
    return fmt::format("{}, {}", options.adjustments.size(), nxSha256::GetOfText(text));
}

// Without capital there is no buying power.
const char* GetMargin(const nxRunOptions& options)
{
    if (!options.capital.IsValid() || options.margin == nxMarginRule::Off) return "off";
    return options.margin == nxMarginRule::Refuse ? "refuse" : "tell";
}

std::string GetPeriods(const nxRunOptions& options)
{
    std::string text;
    for (const auto& [product, period] : options.barPeriods)
        text +=
            fmt::format("{}{}={}s", text.empty() ? "" : ",", product, period / nxTime::NanosecondsPerSecond);
    return text.empty() ? "told by the data" : text;
}

std::string GetGiven(const std::string& text)
{
    return text.empty() ? "none" : text;
}

std::string GetTime(std::optional<long long> time)
{
    return time ? nxFeedTime::GetAsString(*time) : "none";
}

// Of imported data.
std::string GetLots(const nxRunOptions& options)
{
    std::string text;
    for (const auto& [product, lotSize] : options.lotSizes)
        text += fmt::format("{}{}={}", text.empty() ? "" : ",", product, lotSize.GetAsString());
    return text.empty() ? "told by the data" : text;
}

const char* GetYes(bool value)
{
    return value ? "yes" : "no";
}

}  // namespace

std::vector<std::pair<std::string, std::string>> nxGetRunSettings(const nxRunOptions& options)
{
    const nxExchangeOptions& exchange = options.exchange;
    const nxQueueModel& queue = *exchange.queue.model;
    std::vector<std::pair<std::string, std::string>> settings = {
        {"fills", exchange.fills->name},
        {"queue-model",
         queue.takesPower ? fmt::format("{}:{}", queue.name, exchange.queue.power) : std::string(queue.name)},
        {"self-trade", nxSelfTradeRule::Get(exchange.selfTrade).name},
        {"beyond", exchange.walksBeyond ? "walk" : "wait"},
        {"late-trades", GetMilliseconds(exchange.lateTrades)},
        {"bar-fills", exchange.bars.model->name},
        {"bar-limits", exchange.bars.isThrough ? "through" : "touch"},
        {"participation", exchange.participation == 0 ? "any" : fmt::format("{}%", exchange.participation)},
        {"latency", GetText(exchange.request)},
        {"answer-latency", GetText(exchange.answer)},
        {"feed-latency", GetText(options.feedLatency)},
        {"bar-time", !options.barsBearStart   ? "as the files tell"
                     : *options.barsBearStart ? "start"
                                              : "end"},
        {"bar-period", GetPeriods(options)},
        {"lenient", GetYes(options.lenient)},
        {"layout",
         options.form.layout == nullptr ? "as the files tell" : std::string(options.form.layout->name)},
        {"columns", GetGiven(options.form.columns)},
        {"product", GetGiven(options.form.product)},
        {"zone", options.form.zone == nullptr ? "none" : options.form.zone->GetName()},
        {"date", options.form.day ? GetTime(*options.form.day * nxTime::NanosecondsPerDay) : "none"},
        {"date-order", !options.form.isDayFirst   ? "as the files tell"
                       : *options.form.isDayFirst ? "dmy"
                                                  : "mdy"},
        {"price-scale", options.form.priceScale.IsValid() ? options.form.priceScale.GetAsString() : "none"},
        {"round-volumes", GetYes(options.roundsVolumes)},
        {"lot-sizes", GetLots(options)},
        {"from", GetTime(options.from)},
        {"to", GetTime(options.to)},
        {"warmup", fmt::format("{}s", options.warmup / nxTime::NanosecondsPerSecond)},
        {"on-error", options.continueOnError ? "continue" : "stop"},
        {"memory-limit",
         options.memoryLimit == 0 ? "none" : fmt::format("{} MiB", options.memoryLimit >> 20)},
        {"round-trips", options.roundTrips == nxMatching::Fifo ? "fifo" : "average"},
        {"products", options.productFile.empty()
                         ? "none"
                         : nxSha256::GetOfFile(options.productFile).value_or("can be read only once")},
        {"watch-products", GetYes(options.watchProducts)},
        {"adjustments", GetAdjustments(options)},
        {"margin", GetMargin(options)},
        {"impact", exchange.impact > 0 ? nxStringHelper::GetAsString(exchange.impact) : "none"},
        {"changes", GetChanges(options)},
        {"account", options.jobs.empty() ? "" : options.jobs.front().account},
        {"store", GetYes(!options.storeDirectory.empty())},
        {"store-every", nxStringHelper::GetAsString(options.storeEvery)},
    };
    for (const nxJobOptions& job : options.jobs)
        if (job.selection) settings.emplace_back("select " + job.name, GetText(*job.selection));
    return settings;
}
