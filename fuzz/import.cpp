// A file as some publisher writes it, its first line its name and what a command line would tell of it: read
// to its end or to an error with its place; imported wholly or not at all; and what was imported is what was
// read.
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/feed/nxDataSet.h"
#include "host/feed/nxFeed.h"
#include "host/feed/nxFeedTime.h"
#include "host/feed/nxFormArguments.h"
#include "host/feed/nxImport.h"

namespace {

void Require(bool holds)
{
    if (!holds) std::abort();
}

// "NAME [OPTION=VALUE ...]". False: a command line would be refused.
bool ReadTitle(const std::string& title, std::string& name, nxFeedOptions& options)
{
    nxFormArguments arguments;
    const std::map<std::string, std::string*> texts = {
        {"layout", &arguments.layout},   {"columns", &arguments.columns},
        {"product", &arguments.product}, {"zone", &arguments.zone},
        {"date", &arguments.date},       {"date-order", &arguments.dateOrder},
        {"scale", &arguments.priceScale}};
    std::istringstream words(title);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        const std::string option = word.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : word.substr(equals + 1);
        if (equals == std::string::npos) name += (name.empty() ? "" : " ") + word;
        if (texts.contains(option)) *texts.at(option) = value;
        if (option == "round") options.roundsVolumes = true;
        if (option == "bar-period" && nxSetBarPeriods({value}, options.barPeriods)) return false;
    }
    std::erase_if(name, [](char c) { return c == '/' || c == '\0'; });
    if (name.empty() || name.size() > 200 || name.starts_with('.')) name = "file.csv";
    const auto refusal = arguments.Apply(options.form);
    Require(!refusal || !refusal->empty());
    return !refusal;
}

std::string Describe(const nxFeedEvent& event, const nxFeedProductTable& products)
{
    std::string text = fmt::format("{} {}", event.time, products.Get(event.product).GetName());
    const auto add = [&text](const auto& value) { text += " " + value.GetAsLogString(); };
    switch (event.kind) {
        case nxFeedKind::Quote:
            for (const nxDecimal& price : {event.quote.bid, event.quote.ask, event.quote.last})
                add(price);
            for (const nxVolume& volume :
                 {event.quote.bidVolume, event.quote.askVolume, event.quote.lastVolume})
                add(volume);
            break;
        case nxFeedKind::Depth:
            for (const nxFeedLevel& level : event.levels) {
                add(level.price);
                add(level.volume);
            }
            break;
        case nxFeedKind::Bar:
            for (const nxDecimal& price : {event.bar.open, event.bar.high, event.bar.low, event.bar.close})
                add(price);
            add(event.bar.volume);
    }
    return text + "\n";
}

// Sorted, since events of one time have no order among files. Null: it ended in an error.
std::optional<std::string> Read(const std::vector<std::string>& paths, const nxFeedOptions& options)
{
    nxFeed feed(options);
    std::vector<std::string> lines;
    if (feed.Open(paths, {})) {
        long long before = INT64_MIN;
        while (const nxFeedEvent* event = feed.Next()) {
            Require(event->time >= before);
            before = event->time;
            lines.push_back(Describe(*event, feed.GetProducts()));
        }
    }
    std::ranges::sort(lines);
    if (!feed.HasFailed()) return fmt::format("{}", fmt::join(lines, ""));
    Require(!feed.GetError().GetText().empty());
    return std::nullopt;
}

void TryImport(const std::string& path, const std::string& folder, const nxFeedOptions& feed,
               const std::optional<std::string>& expected)
{
    nxImportOptions options;
    options.files = {path};
    options.folder = folder;
    options.feed = feed;
    options.feed.takesRowsAsTheyStand = true;
    nxImport import(options);
    std::ostringstream out;
    if (import.Run(out) != nxImport::Result::Done) {
        Require(!import.GetError().empty());
        return Require(!std::filesystem::exists(folder) || std::filesystem::is_empty(folder));
    }
    nxDataFiles files;
    if (const auto refusal = files.Add(folder + "/data.toml")) {
        std::fprintf(stderr, "%s\n", refusal->c_str());
        std::abort();
    }
    nxFeedOptions own;
    own.lotSizes = files.lotSizes;
    own.barPeriods = files.barPeriods;
    const std::optional<std::string> imported = Read(files.paths, own);
    // What is rounded depends on the lots, which an import finds from all rows.
    if (!expected || feed.roundsVolumes || imported == expected) return;
    std::fprintf(stderr, "read:\n%simported:\n%s%s", expected->c_str(),
                 imported.value_or("an error\n").c_str(), out.str().c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string name;
    nxFeedOptions options;
    if (!ReadTitle(text.substr(0, end), name, options)) return 0;
    char folder[] = "/tmp/nx_fuzz_XXXXXX";
    Require(mkdtemp(folder) != nullptr);
    const std::string path = std::string(folder) + "/" + name;
    std::ofstream(path, std::ios::binary) << text.substr(std::min(end + 1, text.size()));
    const std::optional<std::string> read = Read({path}, options);
    TryImport(path, std::string(folder) + "/imported", options, read);
    options.isLenient = true;
    static_cast<void>(Read({path}, options));
    std::filesystem::remove_all(folder);
    return 0;
}
