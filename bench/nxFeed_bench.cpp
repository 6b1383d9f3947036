// Rows of a plain file, from the file to the event; the file is synthetic and lies in the page cache.
#include <benchmark/benchmark.h>

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/feed/nxFeed.h"
#include "host/synthetic/nxMarketGenerator.h"

namespace {

// A day of quotes or depth in the folder for temporary files, removed at the end.
class SyntheticFile
{
public:
    explicit SyntheticFile(nxFeedKind kind)
        : _path(std::filesystem::temp_directory_path() /
                (kind == nxFeedKind::Depth ? "nx_bench_depth.csv" : "nx_bench_quotes.csv"))
    {
        nxMarketGeneratorOptions options;
        options.kind = kind;
        std::FILE* file = std::fopen(_path.c_str(), "wb");
        if (file == nullptr) return;
        nxMarketGenerator generator(options);
        _good = generator.Generate([file](std::string_view text) {
            return std::fwrite(text.data(), 1, text.size(), file) == text.size();
        });
        _good = std::fclose(file) == 0 && _good;
    }
    ~SyntheticFile()
    {
        std::error_code ignored;
        std::filesystem::remove(_path, ignored);
    }
    SyntheticFile(const SyntheticFile&) = delete;
    SyntheticFile& operator=(const SyntheticFile&) = delete;

    bool IsGood() const { return _good; }
    std::string GetPath() const { return _path.string(); }

private:
    std::filesystem::path _path;
    bool _good = false;
};

void ReadRows(benchmark::State& state, nxFeedKind kind)
{
    const SyntheticFile file(kind);
    if (!file.IsGood()) state.SkipWithError("the synthetic file could not be written");
    std::int64_t rows = 0;
    for (auto _ : state) {
        nxFeed feed;
        if (!feed.Open({file.GetPath()})) state.SkipWithError(feed.GetError().GetText().c_str());
        while (const nxFeedEvent* event = feed.Next())
            rows += event->rows;
        if (feed.HasFailed()) state.SkipWithError(feed.GetError().GetText().c_str());
    }
    state.SetItemsProcessed(rows);
}
BENCHMARK_CAPTURE(ReadRows, quotes, nxFeedKind::Quote)
    ->Name("nxFeed/quotes_row")
    ->UseRealTime()  // a thread reads ahead
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadRows, depth, nxFeedKind::Depth)
    ->Name("nxFeed/depth_row")
    ->UseRealTime()  // a thread reads ahead
    ->Unit(benchmark::kMillisecond);

// The same bars and trades in our own format and as others write them. Prices and sizes vary with the row.
struct Form
{
    const char* name;
    const char* layout;  // empty: the header tells
    const char* header;
    // {0} nanoseconds, {1} milliseconds, {2} date, {3} time of day, {4} price, {5} size
    const char* row;
};

constexpr Form Forms[] = {
    {"own_bars", "", "time,product,open,high,low,close,volume\n", "{0},A,{4}.25,{4}.75,{4},{4}.5,{5}\n"},
    {"binance_klines", "binance-klines", "",
     "{1},{4}.25,{4}.75,{4},{4}.5,{5},{1},1401.47608,77,19023.1,0.5426,0\n"},
    {"mt5_bars", "", "<DATE>\t<TIME>\t<OPEN>\t<HIGH>\t<LOW>\t<CLOSE>\t<TICKVOL>\t<VOL>\t<SPREAD>\n",
     "{2}\t{3}\t{4}.25\t{4}.75\t{4}\t{4}.5\t{5}\t0\t44\n"},
    {"new_york_bars", "firstrate", "timestamp,open,high,low,close,volume\n",
     "{2} {3},{4}.25,{4}.75,{4},{4}.5,{5}\n"},
    {"own_trades", "", "time,product,last,lastVolume,side\n", "{0},A,{4}.25,{5},BUY\n"},
    {"tardis_trades", "", "exchange,symbol,timestamp,local_timestamp,id,side,price,amount\n",
     "bitmex,A,{1}000,{1}000,ccc3c1fa-212c-e8b0,buy,{4}.25,{5}\n"},
    {"binance_trades", "binance-trades", "", "51175358,{4}.25,{5},99.875391,{1},True,True\n"},
};

void ReadForm(benchmark::State& state, const Form& form)
{
    constexpr int count = 200'000;
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "A-bench.csv";
    std::string text = form.header;
    for (int i = 0; i < count; ++i) {
        const long long seconds = 1'704'067'200 + 10LL * i;  // up to a time before clocks are put forward
        const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
        const auto day = std::chrono::floor<std::chrono::days>(time);
        const std::chrono::year_month_day date(day);
        const std::chrono::hh_mm_ss clock(time - day);
        text += fmt::format(
            fmt::runtime(form.row), seconds * 1'000'000'000, seconds * 1000,
            fmt::format("{}.{:02}.{:02}", static_cast<int>(date.year()),
                        static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day())),
            fmt::format("{:02}:{:02}:{:02}", clock.hours().count(), clock.minutes().count(),
                        clock.seconds().count()),
            1000 + i % 97, 1 + i % 89);
    }
    std::ofstream(path, std::ios::binary) << text;
    nxFeedOptions options;
    options.form.layout = nxFeedLayout::Find(form.layout);
    for (auto _ : state) {
        nxFeed feed(options);
        if (!feed.Open({path.string()})) state.SkipWithError(feed.GetError().GetText().c_str());
        int rows = 0;
        while (feed.Next() != nullptr)
            ++rows;
        if (rows != count) state.SkipWithError(feed.GetError().GetText().c_str());
    }
    state.SetItemsProcessed(state.iterations() * count);
    std::filesystem::remove(path);
}

[[maybe_unused]] const bool areRegistered = [] {
    for (const Form& form : Forms)
        benchmark::RegisterBenchmark((std::string("nxFeed/") + form.name).c_str(), ReadForm, form)
            ->MeasureProcessCPUTime()  // a thread reads ahead
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    return true;
}();

}  // namespace
