// A script that calls whatever there is, over a run of the host: the bytes choose how the run is made and
// what the script, caller.lua, does. The record of the run is read back to the result that the run had.
#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "fuzz/caller.h"
#include "fuzz/nxFuzzFile.h"
#include "host/author/nxScriptMembers.h"
#include "host/check/nxScriptCheckTexts.h"
#include "host/market/nxProductFile.h"
#include "host/report/nxRecordReader.h"
#include "host/report/nxResultDocument.h"
#include "host/run/nxRun.h"
#include "indicators/nxIndicatorCatalogue.h"
#include "scriptFramework/job/nxCallback.h"

namespace {

constexpr const char* Products = R"(
[[product]]
name = "F"
legs = [{ product = "A" }, { product = "B", side = "SELL", priceRatio = 0.5 }]
[[product]]
name = "A"
tickSize = 0.25
pointValue = 50
currency = "USD"
makerFee = 0.25
takerFee = 0.5
[[product]]
name = "B"
)";

// Every other row of a product a trade; a few seconds in all, since timers run through them.
std::string MakeQuotes(const char* product)
{
    std::string text = "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n";
    for (int i = 0; i < 60; ++i) {
        const double bid = 100 + 0.25 * (i * 7 % 9 - 4);
        text += fmt::format("20240108:14:30:0{}.{:03},{},", i / 20, i % 20 * 50, product);
        text += i % 2 == 0
                    ? fmt::format("{},{},{},{},,,\n", bid, 1 + i % 7, bid + 0.25 * (1 + i % 3), 1 + i % 5)
                    : fmt::format(",,,,{},{},{}\n", bid, 1 + i % 9, i % 4 == 1 ? "BUY" : "SELL");
    }
    return text;
}

std::string MakeDepth()
{
    std::string text = "time,product,side,price,volume\n";
    for (int i = 0; i < 40; ++i)
        text += fmt::format("20240108:14:30:0{}.{:03},A,{},{},{}\n", i / 20, i % 20 * 50 + 25,
                            i % 2 == 0 ? "BUY" : "SELL", 100 + (i % 2 == 0 ? -0.25 : 0.25) * (1 + i / 2 % 4),
                            i % 11);
    return text;
}

std::string MakeBars()
{
    std::string text = "time,product,open,high,low,close,volume\n";
    for (int i = 0; i < 30; ++i)
        text += fmt::format("20240108:14:30:0{}.{},C,{},{},{},{},{}\n", i / 10, i % 10, 100 + i % 3,
                            102 + i % 3, 99, 100 + i % 5 * 0.5, 10 * i);
    return text;
}

// What stands in front of the caller: all that can be called, and how.
std::string MakeKnowledge()
{
    std::string text = nxScriptMembersText() + nxScriptCheckApiText() + "callbacks = {";
    for (const char* name : nxCallbackNames)
        text += fmt::format("'{}',", name);
    text += "}\nindicators = {";
    for (const nxIndicatorType& type : nxIndicatorCatalogue::GetTypes()) {
        text += fmt::format("{{type='{}',", type.name);
        for (const auto& parameter : type.parameters)
            text += fmt::format("'{}',", parameter.name);
        text += "},";
    }
    return text +
           "}\nwords = "
           "{'A','B','C','F','BUY','SELL','LIMIT','MARKET','GTC','100','100.25','5','true','a','b','one',"
           "'two','number','caller','other','USD','20240108','20240108:14:30','20240108:14:29:59','14:30:01',"
           "'','%s%d','mean','user','MINUTE'}\n";
}

std::string Quote(const std::uint8_t* data, std::size_t size)
{
    std::string text = "local input = '";
    for (std::size_t i = 0; i < size; ++i)
        text += fmt::format("\\{:03}", data[i]);
    return text + "'\n";
}

nxRunOptions MakeOptions(const std::uint8_t* choices)
{
    static const nxFuzzFile quotes(MakeQuotes("A")), others(MakeQuotes("B")), depth(MakeDepth()),
        bars(MakeBars());
    static const std::vector<nxProductDescription> products = [] {
        std::vector<nxProductDescription> read;
        nxFeedError error;
        if (!nxProductFile::Read(nxFuzzFile(Products).GetPath(), read, error)) std::abort();
        return read;
    }();
    nxRunOptions options;
    options.data = {quotes.GetPath(), others.GetPath(), depth.GetPath(), bars.GetPath()};
    options.products = products;
    options.storeDirectory = "stores";  // of the options alone: they are in memory
    options.storeImage = "";
    options.storeEvery = 1.0;
    options.continueOnError = true;
    options.memoryLimit = std::size_t{32} << 20;
    options.profile = choices[0] % 2 == 0 ? nxScriptProfile::Base : nxScriptProfile::Strict;
    options.exchange.fills = &nxFillModel::GetAll()[choices[1] % nxFillModel::GetAll().size()];
    if (choices[2] % 2 == 1) options.exchange.request.least = 1'000'000 * choices[2];
    if (choices[2] % 3 == 1) options.exchange.answer.least = 1'000'000 * choices[2];
    if (choices[2] % 5 == 1) options.feedLatency.least = 1'000'000 * choices[2];
    for (const char* const name : {"one", "b"})
        options.changes.push_back({1'704'724'201'500'000'000, std::nullopt, name, "0", "tag"});
    if (choices[3] % 4 == 1) options.explain = {1, 2};
    if (choices[3] % 4 == 2) options.equityStep = 1.0;
    if (choices[3] % 3 == 1) options.capital = nxDecimal(10'000, 1, 0);
    return options;
}

nxJobOptions MakeJob(const std::string& name, const std::string& script)
{
    nxJobOptions job;
    job.name = name;
    job.script = script;
    const char* const parameters[][3] = {
        {"one", "int", "1"}, {"two", "decimal", "100.25"}, {"a", "text", "A"}, {"b", "bool", "true"}};
    for (const auto& [parameter, type, value] : parameters)
        if (job.parameters.Define(parameter, type, value)) std::abort();
    job.selection.emplace();
    if (job.selection->SetFromText("product=A,side=BUY,volume=5,price=100.25")) std::abort();
    return job;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string knowledge = MakeKnowledge();
    if (size < 4) return 0;
    const nxFuzzFile script(knowledge + Quote(data + 4, size - 4) + nxFuzzCallerText());
    const nxFuzzFile record(""), document("");
    nxRunOptions options = MakeOptions(data);
    options.jobs = {MakeJob("caller", script.GetPath()), MakeJob("other", script.GetPath())};
    options.recordFile = record.GetPath();
    options.jsonFile = document.GetPath();
    std::ostringstream out, err;
    nxRun run(std::move(options), out, err);
    const bool isRefused = run.Run() == nxRunResult::InputFailed;
    const auto isLoaded = [](const nxJobStatistics& job) { return job[nxCallback::OnPrice].defined; };
    if (isRefused || !std::ranges::all_of(run.GetStatistics().jobs, isLoaded)) {
        std::fprintf(stderr, "%s%s", out.str().c_str(), err.str().c_str());
        std::abort();
    }
    nxRecordReader reader;
    if (const auto error = reader.Read(record.GetPath())) {
        std::fprintf(stderr, "%s\n", error->c_str());
        std::abort();
    }
    std::ostringstream again;
    nxResultDocument::Write(again, reader.GetResult());
    if (again.str() != document.Read()) {
        std::fprintf(stderr, "of the run:\n%sof the record:\n%s", document.Read().c_str(),
                     again.str().c_str());
        std::abort();
    }
    return 0;
}
