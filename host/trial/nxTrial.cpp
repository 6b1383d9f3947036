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

namespace {

using Json = nxTrialSheet::Json;
using Fault = nxTrialOutcome::Fault;
using State = nxTrialOutcome::State;

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
Json RunAndJudge(nxRunOptions options, const nxTrialExpectations& expectations)
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
    if (!follower.failures.empty() && !expectations.ExpectsFailure())
        faults.push_back({{"line", 0}, {"text", "the script failed: " + follower.failures.front().text}});
    for (const auto& fault : expectations.Judge(follower, profit))
        faults.push_back({{"line", fault.line},
                          {"text", fmt::format("expected {}, came {}", fault.expected, fault.came)}});
    return {{"faults", faults}};
}

// "cross_test.lua:12: text", or "cross_test.lua: text", as line and text, where it is of that file.
Fault Place(const std::string& path, const std::string& text)
{
    Fault fault{0, text};
    if (!text.starts_with(path + ":")) return fault;
    if (text.starts_with(path + ": ")) return {0, text.substr(path.size() + 2)};
    std::istringstream stream(text.substr(path.size() + 1));
    if (stream >> fault.line && stream.get() == ':') {
        std::getline(stream >> std::ws, fault.text, '\0');
        return fault;
    }
    return {0, text};
}

}  // namespace

std::string nxTrialOutcome::Describe(const Fault& fault) const
{
    return fault.line == 0 ? file + ": " + fault.text
                           : fmt::format("{}:{}: {}", file, fault.line, fault.text);
}

nxTrialProcess::Outcome nxTrial::_Do(const std::function<std::string()>& work) const
{
    nxGuardOptions guard;
    guard.interrupted = _options.run.interrupted;
    return nxTrialProcess::Do(guard, _options.limit, [&work](nxRunPage&) { return work(); });
}

std::optional<Fault> nxTrial::Open(const std::string& path)
{
    if (const auto failure = _sheet.Read(path)) return Place(path, *failure);
    const auto outcome = _Do([this] { return Json(_sheet.ListTests()).dump(); });
    if (!outcome.death.empty()) return Place(path, outcome.death);
    _tests = Json::parse(outcome.text).get<std::vector<std::string>>();
    if (_tests.empty()) return Fault{0, "has no function whose name begins with Test"};
    return std::nullopt;
}

nxTrialOutcome nxTrial::Run(const std::string& test) const
{
    const auto begin = std::chrono::steady_clock::now();
    nxTrialOutcome outcome{.file = _sheet.GetPath(), .name = test};
    const auto description = _Do([&] { return _sheet.Describe(test).dump(); });
    if (!description.death.empty()) {
        outcome.faults.push_back(Place(outcome.file, description.death));
    } else {
        const Json sheet = Json::parse(description.text);
        try {
            _Run(sheet, outcome.faults);
        } catch (const Fault& fault) {
            outcome.faults.push_back(fault);
        }
        for (Fault& fault : outcome.faults)
            if (fault.line == 0) fault.line = sheet.at("line").get<unsigned int>();
    }
    const bool isInterrupted = _options.run.interrupted != nullptr && *_options.run.interrupted;
    outcome.state = outcome.faults.empty() ? State::Passed : isInterrupted ? State::NotRun : State::Failed;
    outcome.duration =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    return outcome;
}

// What a test describes, ready to be run.
struct nxTrial::Plan
{
    nxTrialMarket market;
    nxRunOptions options;
    nxRunArguments arguments;
    std::optional<nxTrialExpectations> expectations;  // once the date of the market is known
    unsigned int scriptLine = 0;

    // Throws what ends a run before it begins, with the row of the market that is to blame for it.
    [[noreturn]] void Refuse(const std::string& text) const
    {
        const auto fault = market.Explain(text);
        throw fault ? Fault{fault->line, "market: " + fault->text} : Fault{scriptLine, text};
    }
};

void nxTrial::_Prepare(const Json& sheet, Plan& plan) const
{
    if (!sheet.contains("script")) throw Fault{0, "names no script; write script \"cross.lua\""};
    const Json& script = sheet.at("script").at("keys");
    plan.scriptLine = script.at("line").get<unsigned int>();
    const auto folder = std::filesystem::path(_sheet.GetPath()).parent_path();
    plan.arguments.scripts = {(folder / script.at("path").get<std::string>()).string()};
    for (const auto& [name, value] : script.at("parameters").at("keys").items())
        plan.arguments.parameters.push_back(GetParameter(name, value));
    for (const Json& call : sheet.at("markets").at("list"))
        if (const auto fault = plan.market.Add(call.at("keys"))) throw Fault{fault->line, fault->text};
    if (!plan.market.HasRows())
        throw Fault{0, "has no market; write market { \"09:30:00 100 5 x 100.25 5\" }"};
    plan.expectations.emplace(_sheet, plan.market.GetDate());
    for (const Json& call : sheet.at("expects").at("list"))
        if (const auto fault = plan.expectations->Add(call.at("keys")))
            throw Fault{fault->line, fault->expected};
    if (plan.expectations->IsEmpty())
        throw Fault{0, "expects nothing; write expect { position = 1 }, or orders = 0"};
}

void nxTrial::_Run(const Json& sheet, std::vector<Fault>& faults) const
{
    Plan plan{nxTrialMarket(_sheet), _options.run, _options.arguments, std::nullopt};
    _Prepare(sheet, plan);
    nxRunOptions& options = plan.options;
    const Folder folder;
    if (folder.GetPath().empty() || !plan.market.Write(folder.GetPath(), options, plan.arguments))
        throw Fault{0, "its market cannot be written to the folder of temporary files"};
    if (const auto error = plan.arguments.Apply(options)) plan.Refuse(*error);
    const auto run =
        nxTrialProcess::Do(nxRunSandbox::GetGuardOptions(options), _options.limit, [&](nxRunPage& page) {
            nxRunSandbox::Share(options, page);
            options.recordBuffer = nullptr;
            return RunAndJudge(options, *plan.expectations)
                .dump(-1, ' ', false, Json::error_handler_t::replace);
        });
    if (!run.death.empty()) throw Fault{0, run.death};
    const Json result = Json::parse(run.text);
    if (result.contains("refused")) {
        const auto text = result.at("refused").get<std::string>();
        plan.Refuse(text.substr(0, text.find('\n')));
    }
    for (const Json& fault : result.at("faults"))
        faults.push_back({fault.at("line").get<unsigned int>(), fault.at("text").get<std::string>()});
}
