#include "host/trial/nxTrial.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <filesystem>
#include <sstream>

#include "base/values/nxTextStream.h"
#include "host/report/nxNowhere.h"
#include "host/run/nxRun.h"
#include "host/run/nxRunSandbox.h"
#include "host/trial/nxTrialExpectations.h"
#include "host/trial/nxTrialMarket.h"
#include "host/trial/nxTrialProcess.h"

namespace {

using Json = nxTrialSheet::Json;
using Fault = nxTrialOutcome::Fault;

// For the files of a test; goes with all that is in it.
class Folder
{
public:
    Folder()
    {
        std::string path = (std::filesystem::temp_directory_path() / "algoserver-test-XXXXXX").string();
        if (mkdtemp(path.data()) != nullptr) _path = path;
    }
    ~Folder()
    {
        std::error_code ignored;
        if (!_path.empty()) std::filesystem::remove_all(_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& GetPath() const { return _path; }

private:
    std::string _path;
};

// "NAME=VALUE"; a text stays one, whatever it looks like.
std::string GetParameter(const std::string& name, const Json& value)
{
    if (value.is_string()) return name + ":text=" + value.get<std::string>();
    return name + "=" + value.dump();
}

double GetProfit(const nxResult& result)
{
    double profit = 0.0;
    for (const nxResultData& data : result.results)
        profit += data.profit.GetAsDouble();
    return profit;
}

// In the process of the test: a line for each fault, after the line of the test file.
Json RunAndJudge(nxRunOptions options, const nxTrialExpectations& expectations, bool mayFail)
{
    nxTrialFollower follower;
    follower.looks = expectations.GetLooks();
    options.follower = &follower;
    double profit = 0.0;
    options.onResult = [&](const nxResult& result) { profit = GetProfit(result); };
    nxNowhere nowhere;
    std::ostream out(&nowhere);
    nxTextStream errors;
    nxRun run(std::move(options), out, errors);
    if (run.Run() == nxRunResult::InputFailed) return {{"refused", errors.str()}};
    Json faults = Json::array();
    if (!follower.failures.empty() && !mayFail)
        faults.push_back({{"line", 0}, {"text", "the script failed: " + follower.failures.front().text}});
    for (const auto& fault : expectations.Judge(follower, profit))
        faults.push_back({{"line", fault.line},
                          {"text", fmt::format("expected {}, came {}", fault.expected, fault.came)}});
    return {{"faults", faults}};
}

// "cross_test.lua:12: text" as line and text, where it is of that file.
Fault Place(const std::string& path, const std::string& text)
{
    Fault fault{0, text};
    if (!text.starts_with(path + ":")) return fault;
    std::istringstream stream(text.substr(path.size() + 1));
    if (stream >> fault.line && stream.get() == ':') {
        std::getline(stream >> std::ws, fault.text, '\0');
        return fault;
    }
    return {0, text};
}

}  // namespace

std::optional<std::string> nxTrial::Open(const std::string& path)
{
    if (const auto failure = _sheet.Read(path)) return failure;
    nxGuardOptions guard;
    guard.interrupted = _options.run.interrupted;
    const auto outcome = nxTrialProcess::Do(guard, _options.limit, [&](nxRunPage&) {
        Json names = Json::array();
        for (const std::string& name : _sheet.ListTests())
            names.push_back(name);
        return names.dump();
    });
    if (!outcome.death.empty())
        return outcome.death.starts_with(path) ? outcome.death : path + ": " + outcome.death;
    _tests = Json::parse(outcome.text).get<std::vector<std::string>>();
    if (_tests.empty()) return path + ": has no function whose name begins with Test";
    return std::nullopt;
}

nxTrialOutcome nxTrial::Run(const std::string& test) const
{
    const auto begin = std::chrono::steady_clock::now();
    nxTrialOutcome outcome;
    outcome.file = _sheet.GetPath();
    outcome.name = test;
    nxGuardOptions guard;
    guard.interrupted = _options.run.interrupted;
    const auto sheet =
        nxTrialProcess::Do(guard, _options.limit, [&](nxRunPage&) { return _sheet.Describe(test).dump(); });
    if (!sheet.death.empty())
        outcome.faults.push_back(Place(outcome.file, sheet.death));
    else
        _Run(Json::parse(sheet.text), outcome);
    outcome.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    return outcome;
}

void nxTrial::_Run(const Json& sheet, nxTrialOutcome& outcome) const
{
    const auto fail = [&](unsigned int line, const std::string& text) {
        outcome.faults.push_back({line, text});
    };
    if (!sheet.contains("script")) return fail(0, "names no script; write script \"cross.lua\"");
    const Json& script = sheet.at("script").at("keys");
    const auto scriptLine = script.at("line").get<unsigned int>();
    nxRunOptions options = _options.run;
    nxRunArguments arguments = _options.arguments;
    const auto folderOfTest = std::filesystem::path(outcome.file).parent_path();
    arguments.scripts = {(folderOfTest / script.at("path").get<std::string>()).string()};
    for (const auto& [name, value] : script.at("parameters").at("keys").items())
        arguments.parameters.push_back(GetParameter(name, value));
    nxTrialMarket market(_sheet);
    for (const Json& call : sheet.at("markets").at("list"))
        if (const auto fault = market.Add(call.at("keys"))) return fail(fault->line, fault->text);
    if (!market.HasRows()) return fail(0, "has no market; write market { \"09:30:00 100 5 x 100.25 5\" }");
    nxTrialExpectations expectations(_sheet, market.GetDate());
    bool mayFail = false;
    for (const Json& call : sheet.at("expects").at("list")) {
        if (const auto fault = expectations.Add(call.at("keys"))) return fail(fault->line, fault->expected);
        mayFail = mayFail || call.at("keys").at("content").at("keys").contains("error");
    }
    if (expectations.IsEmpty())
        return fail(0, "expects nothing; write expect { position = 1 }, or orders = 0");
    const Folder folder;
    if (folder.GetPath().empty() || !market.Write(folder.GetPath(), options, arguments))
        return fail(0, "its market cannot be written to the folder of temporary files");
    const auto refuse = [&](const std::string& text) {
        const auto fault = market.Explain(text);
        fault ? fail(fault->line, "market: " + fault->text) : fail(scriptLine, text);
    };
    if (const auto error = arguments.Apply(options)) return refuse(*error);
    const auto run =
        nxTrialProcess::Do(nxRunSandbox::GetGuardOptions(options), _options.limit, [&](nxRunPage& page) {
            nxRunSandbox::Share(options, page);
            options.recordBuffer = nullptr;
            return RunAndJudge(options, expectations, mayFail)
                .dump(-1, ' ', false, Json::error_handler_t::replace);
        });
    if (!run.death.empty()) return fail(0, run.death);
    const Json result = Json::parse(run.text);
    if (result.contains("refused")) {
        const auto text = result.at("refused").get<std::string>();
        return refuse(text.substr(0, text.find('\n')));
    }
    for (const Json& fault : result.at("faults"))
        fail(fault.at("line").get<unsigned int>(), fault.at("text").get<std::string>());
}
