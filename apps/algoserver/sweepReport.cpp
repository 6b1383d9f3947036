#include "apps/algoserver/sweepReport.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "apps/algoserver/run.h"
#include "apps/algoserver/sweep.h"
#include "base/values/nxTextStream.h"
#include "host/report/nxOutputFile.h"
#include "host/report/nxSweepPage.h"
#include "host/run/nxRunFiles.h"
#include "host/sweep/nxSweepDocument.h"
#include "host/sweep/nxSweepFacts.h"
#include "host/sweep/nxSweepIdentity.h"
#include "host/sweep/nxSweepRuns.h"
#include "host/sweep/nxSweepStore.h"

namespace {

using Fault = std::optional<std::string>;

constexpr std::string_view Magic = "SQLite format 3";

// A sweep as its file tells it.
class Sweep
{
public:
    Fault Read(const std::string& file)
    {
        _file = file;
        if (Fault fault = _store.Open(file)) return fault;
        _facts = _store.GetFacts();
        if (Fault fault = nxSweepFacts::Read(_store, _table)) return fault;
        const auto command = nlohmann::json::parse(_facts["command"], nullptr, false);
        if (!command.is_array()) return file + ": holds no command";
        if (const Fault fault = _runs.SetFromArguments(command.get<std::vector<std::string>>()))
            return fmt::format("{}: its command: {}", file, *fault);
        _store.Close();
        _judge.emplace(_table);
        return std::nullopt;
    }

    const nxSweepTable& GetTable() const { return _table; }
    const nxSweepJudge& GetJudge() const { return *_judge; }

    std::string MakeDocument(const std::map<std::size_t, std::string>& pages) const
    {
        nxSweepDocument::Context context;
        for (const std::string& script : _runs.run.jobs.scripts)
            context.title +=
                (context.title.empty() ? "" : ", ") + std::filesystem::path(script).stem().string();
        context.facts = _facts;
        context.rerun = {"algoserver", "report", _file, "--run", "{point}", "-o", "run{point}.html"};
        context.pages = pages;
        nxTextStream text;
        nxSweepDocument::Write(text, _table, *_judge, _judge->FindLuck(_table.plan.GetSeed()), context);
        return std::move(text).str();
    }

    // Runs a point again, over the data that the best was chosen by.
    int MakeRun(std::size_t point, const std::string& page, const std::string& json)
    {
        if (point >= _table.points.size())
            return Refuse(
                fmt::format("--run {}: the sweep has {} runs, from 0 on", point, _table.points.size()));
        nxSweepRuns runs(_table.plan, _runs.GetMake());
        std::vector<nxRunOptions> all;
        if (const Fault fault = runs.GetAll(all)) return Refuse(*fault);
        const std::string change =
            nxSweepIdentity::FindChange(_facts["identity"], nxSweepIdentity::Make(_table.plan, all));
        if (!change.empty())
            return Refuse(
                fmt::format("{} has changed since the sweep: the run would be another one", change));
        nxRunOptions options;
        if (const Fault fault = runs.Get(_table.points[point], GetWhole(), options)) return Refuse(*fault);
        options.reportFile = page;
        options.jsonFile = json;
        const bool isStrict = _runs.run.sandbox.isStrict;
        return ::MakeRun({.isStrict = isStrict}, std::move(options));
    }

    // The same in a process of its own, in silence.
    int MakeRunApart(std::size_t point, const std::string& page)
    {
        std::cout.flush();
        const pid_t child = fork();
        if (child < 0) return Refuse("no process for a run");
        if (child == 0) {
            const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
            if (nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0) _exit(2);
            const int status = MakeRun(point, page, "");
            std::cout.flush();
            _exit(status);
        }
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
    }

    static int Refuse(const std::string& text)
    {
        std::cerr << "algoserver report: " << text << "\n";
        return 2;
    }

private:
    // All that is not held out.
    nxSweepPart GetWhole() const
    {
        nxSweepPart whole;
        for (const nxSweepPart& part : _table.parts) {
            if (part.role > nxSweepPart::Role::Test || part.span.IsEmpty()) continue;
            const nxDaySpan before = whole.span.IsEmpty() ? part.span : whole.span;
            whole.span = {std::min(before.from, part.span.from), std::max(before.to, part.span.to)};
        }
        return whole;
    }

    std::string _file;
    nxSweepStore _store;
    std::map<std::string, std::string> _facts;
    nxSweepTable _table;
    std::optional<nxSweepJudge> _judge;
    SweepRuns _runs;
};

Fault WriteFile(const char* what, const std::string& path, std::string_view text)
{
    nxOutputFile file(what);
    if (Fault error = file.Open(path)) return error;
    file.Write(text);
    return file.Close();
}

std::vector<std::size_t> FindBest(const Sweep& sweep, std::size_t most)
{
    const auto& points = sweep.GetJudge().GetPoints();
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (!std::isnan(points[i].objective)) order.push_back(i);
    std::ranges::stable_sort(order, std::ranges::greater(),
                             [&](std::size_t i) { return points[i].objective; });
    // The chosen one is not always that of the highest value.
    if (const auto best = sweep.GetJudge().GetBest()) {
        std::erase(order, *best);
        order.insert(order.begin(), *best);
    }
    order.resize(std::min(order.size(), most));
    return order;
}

// Pages of so many of the best, in a folder beside the sweep's page, and how that page gets to them. The exit
// status.
int MakePages(Sweep& sweep, const std::string& page, std::size_t count,
              std::map<std::size_t, std::string>& links)
{
    if (count == 0) return 0;
    const std::filesystem::path folder =
        std::filesystem::path(page).replace_extension("").string() + "_pages";
    std::error_code error;
    if (!std::filesystem::create_directory(folder, error) && error)
        return Sweep::Refuse(fmt::format("{}: cannot be made: {}", folder.string(), error.message()));
    for (const std::size_t point : FindBest(sweep, count)) {
        const std::string name = fmt::format("{}.html", point);
        if (const int status = sweep.MakeRunApart(point, (folder / name).string()); status != 0)
            return status;
        links[point] = (folder.filename() / name).string();
    }
    return 0;
}

}  // namespace

bool SweepReport::IsSweep(const std::string& path)
{
    std::array<char, Magic.size()> bytes{};
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    std::ifstream(path, std::ios::binary).read(bytes.data(), bytes.size());
    return std::string_view(bytes.data(), bytes.size()) == Magic;
}

void SweepReport::AddOptions(CLI::App& command)
{
    command.add_option("--csv", csv, "Of a sweep: CSV file with a row for each run; - is standard output")
        ->type_name("FILE.csv");
    command.add_option("--run", run, "Of a sweep: make the run with that number again, and write that")
        ->type_name("NUMBER");
    command
        .add_option("--pages", pages,
                    "Of a sweep: so many of the best runs get pages of their own in the folder FILE_pages")
        ->type_name("COUNT");
}

std::optional<std::string> SweepReport::_FindObstacle(const std::string& file) const
{
    nxRunFiles files;
    files.AddInput(file);
    for (const auto& [option, path] :
         {std::pair("--output", page), std::pair("--json", json), std::pair("--csv", csv)})
        if (!path.empty()) files.AddOutput(option, path);
    if (page.empty() && json.empty() && csv.empty())
        return "-o FILE.html, --json FILE or --csv FILE tells where to write to";
    if (std::ranges::count(std::array{page, json, csv}, "-") > 1)
        return "standard output can be for one of --output, --json and --csv";
    if (pages != 0 && (page.empty() || page == "-")) return "--pages is for the page of -o FILE.html";
    if (run && !csv.empty()) return "--csv is for all runs, and --run for one";
    return files.FindClash();
}

int SweepReport::Write(const std::string& file) const
{
    if (const Fault obstacle = _FindObstacle(file)) return Sweep::Refuse(*obstacle);
    Sweep sweep;
    if (const Fault fault = sweep.Read(file)) return Sweep::Refuse(*fault);
    if (run) return sweep.MakeRun(*run, page, json);
    std::map<std::size_t, std::string> links;
    if (const int status = MakePages(sweep, page, pages, links); status != 0) return status;
    Fault fault;
    const std::string document = page.empty() && json.empty() ? std::string() : sweep.MakeDocument(links);
    if (!json.empty()) fault = WriteFile("the result", json, document);
    if (!fault && !csv.empty()) {
        nxTextStream text;
        nxSweepDocument::WriteTable(text, sweep.GetTable(), sweep.GetJudge());
        fault = WriteFile("the table", csv, text.view());
    }
    if (!fault && !page.empty()) {
        nxTextStream text;
        nxSweepPage::Write(text, document);
        fault = WriteFile("the page", page, text.view());
    }
    return fault ? Sweep::Refuse(*fault) : 0;
}
