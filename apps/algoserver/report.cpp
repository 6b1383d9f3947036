#include "apps/algoserver/report.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "apps/algoserver/sweepReport.h"
#include "base/values/nxTextStream.h"
#include "host/report/nxOutputFile.h"
#include "host/report/nxRecordReader.h"
#include "host/report/nxResultDocument.h"
#include "host/report/nxResultPage.h"
#include "host/run/nxRunFiles.h"

namespace {

struct ReportArguments
{
    std::vector<std::string> records;
    SweepReport sweep;
    std::string &page = sweep.page, &json = sweep.json;
};

int Refuse(const std::string& text)
{
    std::cerr << text << "\n";
    return 2;
}

std::optional<std::string> FindObstacle(const ReportArguments& arguments)
{
    if (arguments.page.empty() && arguments.json.empty())
        return "algoserver report: -o FILE.html or --json FILE tells where to write to";
    if (arguments.page == "-" && arguments.json == "-")
        return "standard output can be for --output or for --json, not for both";
    nxRunFiles files;
    files.AddInputs(arguments.records);
    if (!arguments.page.empty()) files.AddOutput("--output", arguments.page);
    if (!arguments.json.empty()) files.AddOutput("--json", arguments.json);
    return files.FindClash();
}

// The result document of a record; says when that is not all of the run.
std::optional<std::string> MakeDocument(const std::string& record, std::string& document)
{
    nxRecordReader reader;
    if (auto error = reader.Read(record)) return error;
    const nxResult& result = reader.GetResult();
    if (!result.run.isComplete)
        std::cerr << record << ": ends in the middle of the run; the report goes up to there\n";
    else if (!result.run.missing.empty())
        std::cerr << record << ": is of version 1; the report names what that does not tell\n";
    nxTextStream text;
    nxResultDocument::Write(text, result);
    document = std::move(text).str();
    return std::nullopt;
}

std::optional<std::string> Write(const char* what, const std::string& path, std::string_view text)
{
    nxOutputFile file(what);
    if (auto error = file.Open(path)) return error;
    file.Write(text);
    return file.Close();
}

int Report(ReportArguments& arguments)
{
    if (SweepReport::IsSweep(arguments.records.front())) {
        if (arguments.records.size() != 1)
            return Refuse("algoserver report: a sweep stands on a page of its own");
        return arguments.sweep.Write(arguments.records.front());
    }
    if (arguments.sweep.IsOfSweep())
        return Refuse("algoserver report: --csv, --run and --pages are for the results of a sweep");
    if (const auto obstacle = FindObstacle(arguments)) return Refuse(*obstacle);
    std::vector<nxResultPage::Run> runs;
    std::string documents;
    for (const std::string& record : arguments.records) {
        nxResultPage::Run& run = runs.emplace_back();
        run.name = arguments.records.size() == 1 ? "" : record;
        if (const auto error = MakeDocument(record, run.result)) return Refuse(*error);
        documents += run.result;
    }
    if (!arguments.json.empty())
        if (const auto error = Write("the result", arguments.json, documents)) return Refuse(*error);
    if (arguments.page.empty()) return 0;
    nxTextStream page;
    nxResultPage::Write(page, runs);
    if (const auto error = Write("the page", arguments.page, page.view())) return Refuse(*error);
    return 0;
}

}  // namespace

void AddReportCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App& command = *app.add_subcommand("report", "Make a page of the records of runs");
    command.footer(
        "Reads what 'algoserver run --record' or 'algoserver sweep' wrote; - is standard input. A record of "
        "a run\n"
        "may be packed. Several records\n"
        "stand side by side on one page. The result is that of the run itself. A record that was cut gives "
        "a\n"
        "report up to there, which says so, as does standard error.");
    command.add_option("records", arguments->records, "Records of runs, or the results of one sweep")
        ->required()
        ->option_text("RECORD... REQUIRED");
    command
        .add_option("-o,--output", arguments->page,
                    "HTML file to write the page to, which a browser opens without a network; - is standard "
                    "output")
        ->type_name("FILE.html");
    command
        .add_option("--json", arguments->json,
                    "File to write the results to, as run --json does, a line for each record; - is standard "
                    "output")
        ->type_name("FILE");
    arguments->sweep.AddOptions(command);
    command.callback([arguments, &status] { status = Report(*arguments); });
}
