// Rows of a plain quotes file, from the file to the event; the file is synthetic and lies in the page cache.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
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

}  // namespace
