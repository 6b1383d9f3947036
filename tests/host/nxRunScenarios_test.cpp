// Runs algoserver over the scenarios of tests/data/runs, each a test of its own named after its title.
//
//   == TITLE                a scenario, of the sections below it
//   -- TITLE                the scenario above once more, but for the sections that stand here
//   KEY [NAME...]: TEXT     a section; more of its text follows on lines that begin with two blanks
//   # ...                   a comment
//
// What is run, with prelude.lua in front of every script:
//   run: OPTIONS            words of the command line
//   script [NAME...]: LUA   NAME.lua, or script.lua; each is a job, in the order in which they stand here
//   quotes [NAME]: ROWS     NAME.csv, or quotes.csv; depth and bars alike. Rows stand on lines of their own,
//   or
//                           with a ";" between them; cells with blanks. "." is an empty cell, "trade" four of
//                           them, and those at the end may be missing. "9 x ROW": nine rows, with "#" for 1
//                           to 9
//   products: TOML          of --products
//   file NAME: TEXT         any other file
//
// What comes of it, to the byte. A part without a section is not looked at; but without "exit" the status is
// 0, and without "errors", too, standard error is empty.
//   exit: STATUS
//   log: LINES              what stands above the summary; here and in the summary " | " parts two lines, too
//   errors: LINES           standard error, without the speed
//   summary: ROWS           all that have the labels of these, and at last the labels that no row has
//   record: LINES           those of --record, but for the first, which has hashes
//   result: LINES           of --json, each a place and what is there: /results/0/measures/netProfit 4.5
//
// Of times on 8 January 2024 the date is left out, and at 14:30 that, too: 14:31:00, 12.5.
#include <gtest/gtest.h>
#include <stdlib.h>  // mkdtemp
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

namespace {

constexpr const char* Folder = NX_TEST_DIR "/data/runs/";
constexpr const char* Day = "20240108:";
constexpr const char* Minute = "20240108:14:30:";
const std::map<std::string, std::string> Headers = {
    {"quotes", "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n"},
    {"depth", "time,product,side,price,volume\n"},
    {"bars", "time,product,open,high,low,close,volume\n"}};
const std::set<std::string> Causes = {"run", "script", "quotes", "depth", "bars", "products", "file", "exit"};
const std::set<std::string> Effects = {"log", "errors", "summary", "record", "result"};

struct Section
{
    std::string key, name, text;
};

struct Scenario
{
    std::string file, title;
    int line;
    std::vector<Section> sections;

    std::string Get(const std::string& key, const std::string& otherwise) const
    {
        const auto found = std::ranges::find(sections, key, &Section::key);
        return found == sections.end() ? otherwise : found->text;
    }
};

std::vector<std::string> Split(const std::string& text, char at)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, at);)
        if (!part.empty()) parts.push_back(part);
    return parts;
}

void Replace(std::string& text, const std::string& what, const std::string& with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
}

std::vector<Scenario> Read(const std::filesystem::path& file)
{
    std::vector<Scenario> scenarios;
    std::size_t whole = 0;  // the latest that is no variant
    Section* section = nullptr;
    std::ifstream stream(file);
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (line.starts_with("== ") || line.starts_with("-- ")) {
            section = nullptr;
            if (line.front() == '=') whole = scenarios.size();
            scenarios.push_back({file.string(), line.substr(3), number, {}});
            if (line.front() == '-') scenarios.back().sections = scenarios[whole].sections;
        } else if (line.starts_with("  ") && section != nullptr) {
            section->text += line.substr(2) + "\n";
        } else if (!line.empty() && line.front() != '#') {
            static const std::regex form("(\\w+) ?([^:]*):(?: (.*))?");
            std::smatch part;
            if (!std::regex_match(line, part, form) ||
                (!Causes.contains(part[1]) && !Effects.contains(part[1])))
                throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": no section");
            std::vector<Section>& sections = scenarios.at(scenarios.size() - 1).sections;
            const auto known = std::ranges::find_if(sections, [&](const Section& other) {
                return other.key == part[1] && other.name == part[2];
            });
            section = &(known == sections.end() ? sections.emplace_back() : *known);
            *section = {part[1], part[2], part[3].matched ? part[3].str() + "\n" : ""};
        }
    }
    for (Scenario& scenario : scenarios)
        for (Section& known : scenario.sections)
            if (known.key == "log" || known.key == "summary") Replace(known.text, " | ", "\n");
    // What expects nothing is there for its variants.
    std::erase_if(scenarios, [](const Scenario& scenario) {
        return std::ranges::none_of(scenario.sections,
                                    [](const Section& known) { return Effects.contains(known.key); });
    });
    return scenarios;
}

std::string MakeRow(const std::string& text, std::size_t columns)
{
    std::vector<std::string> cells = Split(text, ' ');
    for (std::size_t i = 1; i < cells.size(); ++i) {
        if (cells[i] == "trade") cells.insert(cells.begin() + static_cast<long>(i), 3, cells[i] = ".");
        if (cells[i] == ".") cells[i].clear();
    }
    cells.resize(columns);
    const std::size_t mark = std::min(cells[0].find_first_of(":."), cells[0].size());
    std::string row = mark > 2 ? "" : cells[0][mark] == ':' ? Day : Minute;
    for (const std::string& cell : cells)
        row += cell + ",";
    row.back() = '\n';
    return row;
}

std::string MakeData(const std::string& header, std::string text)
{
    std::string data = header;
    std::ranges::replace(text, ';', '\n');
    for (const std::string& line : Split(text, '\n')) {
        const std::size_t times = line.find(" x ");
        const int count = times == line.npos ? 1 : std::stoi(line);
        for (int i = 1; i <= count; ++i) {
            std::string row = times == line.npos ? line : line.substr(times + 3);
            Replace(row, "#", std::to_string(i));
            data += MakeRow(row, static_cast<std::size_t>(std::ranges::count(header, ',')) + 1);
        }
    }
    return data;
}

std::string Load(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    Replace(text, Minute, "");
    Replace(text, Day, "");
    return text;
}

// The rows of a summary with the labels of the expected ones; a label stands on the first of its rows only.
std::string ChooseRows(const std::string& summary, const std::string& expected)
{
    const auto getLabel = [](const std::string& row) { return row.substr(0, row.find("  ")); };
    std::set<std::string> labels;
    for (const std::string& row : Split(expected, '\n'))
        labels.insert(getLabel(row));
    std::set<std::string> missing = labels;
    std::string rows, label;
    for (const std::string& row : Split(summary, '\n')) {
        if (row.front() != ' ') label = getLabel(row);
        if (labels.contains(label)) rows += row + "\n";
        missing.erase(label);
    }
    missing.erase("");
    for (const std::string& none : missing)
        rows += none + "\n";
    return rows;
}

// Without the figures of the speed, which no line that was logged later is among: it begins with a time.
std::string DropSpeed(const std::string& err)
{
    const std::size_t speed = std::min(err.find("--- speed\n"), err.size());
    std::string errors = err.substr(0, speed);
    for (const std::string& line : Split(err.substr(speed), '\n'))
        if (std::isdigit(line.front()) != 0) errors += line + "\n";
    return errors;
}

class nxRunScenario : public testing::Test
{
public:
    explicit nxRunScenario(const Scenario& scenario) : _scenario(scenario)
    {
        std::string pattern = testing::TempDir() + "nxRunScenario_XXXXXX";
        _folder = std::string(mkdtemp(pattern.data())) + "/";
    }
    ~nxRunScenario() override { std::filesystem::remove_all(_folder); }

private:
    // The file as a word of the command line.
    std::string Write(const std::string& name, const std::string& text)
    {
        std::ofstream(_folder + name, std::ios::binary) << text;
        return " " + name;
    }

    std::string MakeCommand()
    {
        std::string scripts, data, options;
        for (const auto& [key, name, text] : _scenario.sections) {
            if (key == "script") {
                for (const std::string& job : Split(name.empty() ? "script" : name, ' '))
                    scripts += Write(job + ".lua", text);
            } else if (const auto header = Headers.find(key); header != Headers.end()) {
                data += Write((name.empty() ? key : name) + ".csv", MakeData(header->second, text));
            } else if (key == "products") {
                options += " --products" + Write("products.toml", text);
            } else if (key == "file") {
                Write(name, text);
            } else if (key == "run") {
                options += " " + text.substr(0, text.size() - 1);
            }
        }
        return scripts + " --module '" + Folder + "prelude.lua' --record record.jsonl --json result.json" +
               options + " --data" + data;
    }
    int Execute(const std::string& command)
    {
        return WEXITSTATUS(std::system(("cd '" + _folder + "' && " + command + " </dev/null").c_str()));
    }

    // Whatever a run does, its record tells the same result.
    void ExpectReport()
    {
        EXPECT_EQ(Execute("'" NX_ALGOSERVER "' report record.jsonl --json again.json >report 2>&1"), 0)
            << Load(_folder + "report");
        EXPECT_EQ(Load(_folder + "again.json"), Load(_folder + "result.json"));
    }

    // Nor does it matter to a run that others take turns with it over the same data.
    void ExpectBatch(const std::string& command)
    {
        constexpr int notForBatches = 77;
        for (const char* const blockSize : {"1", "3"}) {
            const int status = Execute("'" NX_RUN_BATCH "' " + (blockSize + command) + " >batch 2>&1");
            if (status == notForBatches) return;
            EXPECT_EQ(status, 0) << Load(_folder + "batch");
            for (const std::string copy : {"batch0", "batch1", "batch2"}) {
                EXPECT_EQ(Load(_folder + copy + ".out"), Load(_folder + "out")) << blockSize;
                EXPECT_EQ(Load(_folder + copy + ".json"), Load(_folder + "result.json")) << blockSize;
                EXPECT_EQ(Load(_folder + copy + ".jsonl"), Load(_folder + "record.jsonl")) << blockSize;
            }
        }
    }

    void TestBody() override
    {
        const testing::ScopedTrace trace(_scenario.file.c_str(), _scenario.line, _scenario.title);
        const std::string command = MakeCommand();
        const int status = Execute("'" NX_ALGOSERVER "' run" + command + " >out 2>err");
        const std::string out = Load(_folder + "out"), err = Load(_folder + "err");
        const std::string errors = DropSpeed(err);
        const std::size_t summary = std::min(out.find("--- summary\n"), out.size());
        const std::string log = out.substr(0, summary);
        EXPECT_EQ(status, std::stoi(_scenario.Get("exit", "0"))) << err;
        EXPECT_EQ(errors, _scenario.Get("errors", _scenario.Get("exit", "").empty() ? "" : errors));
        EXPECT_EQ(log, _scenario.Get("log", log));
        EXPECT_EQ(ChooseRows(out.substr(summary), _scenario.Get("summary", "")),
                  _scenario.Get("summary", ""));
        const std::string record = Load(_folder + "record.jsonl");
        const std::string lines = record.substr(record.find('\n') + 1);
        EXPECT_EQ(lines, _scenario.Get("record", lines));
        if (!Load(_folder + "result.json").empty()) ExpectReport();
        if (!_scenario.Get("result", "").empty()) ExpectResult();
        ExpectBatch(command);
    }

    void ExpectResult()
    {
        std::ifstream stream(_folder + "result.json");
        const nlohmann::json result = nlohmann::json::parse(stream);
        for (const std::string& line : Split(_scenario.Get("result", ""), '\n')) {
            const std::size_t blank = line.find(' ');
            const nlohmann::json::json_pointer place(line.substr(0, blank));
            EXPECT_EQ(result.contains(place) ? result[place] : "nothing",
                      nlohmann::json::parse(line.substr(blank)))
                << line;
        }
    }

    const Scenario _scenario;
    std::string _folder;
};

const bool AreRegistered = [] {
    for (const auto& entry : std::filesystem::directory_iterator(Folder)) {
        if (entry.path().extension() != ".txt") continue;
        for (const Scenario& scenario : Read(entry.path())) {
            std::string name = scenario.title;
            std::ranges::replace_if(
                name, [](char letter) { return std::isalnum(letter) == 0; }, '_');
            testing::RegisterTest(("nxRunScenarios_" + entry.path().stem().string()).c_str(), name.c_str(),
                                  nullptr, nullptr, scenario.file.c_str(), scenario.line,
                                  [scenario]() -> nxRunScenario* { return new nxRunScenario(scenario); });
        }
    }
    return true;
}();

}  // namespace
