#include "host/trial/nxTrialReports.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>

namespace {

using Json = nlohmann::ordered_json;
using State = nxTrialOutcome::State;

double GetSeconds(const nxTrialOutcome& outcome)
{
    return std::chrono::duration<double>(outcome.duration).count();
}

std::string WriteDown(const Json& value, int indent)
{
    return value.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string EscapeXml(const std::string& text)
{
    std::string escaped;
    for (const char letter : Json::parse(WriteDown(text, -1)).get<std::string>()) {
        switch (letter) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                // XML knows no other control characters.
                escaped += static_cast<unsigned char>(letter) < ' ' && letter != '\n' && letter != '\t'
                               ? '?'
                               : letter;
        }
    }
    return escaped;
}

// The element that says how a test came out, where it has not passed.
std::string GetVerdict(const nxTrialOutcome& outcome)
{
    if (outcome.state == State::Passed) return {};
    if (outcome.state == State::NotRun) return "<skipped/>";
    std::string text;
    for (const nxTrialOutcome::Fault& fault : outcome.faults)
        text += (text.empty() ? "" : "\n") + outcome.Describe(fault);
    const char* const element = outcome.state == State::NoTests ? "error" : "failure";
    return fmt::format("<{0} message=\"{1}\">{2}</{0}>", element, EscapeXml(outcome.faults.front().text),
                       EscapeXml(text));
}

std::string GetSuite(std::span<const nxTrialOutcome> outcomes)
{
    const auto count = [&](State state) {
        return std::ranges::count(outcomes, state, &nxTrialOutcome::state);
    };
    const std::string file = EscapeXml(outcomes.front().file);
    double seconds = 0.0;
    std::string cases;
    for (const nxTrialOutcome& outcome : outcomes) {
        seconds += GetSeconds(outcome);
        cases += fmt::format("<testcase classname=\"{}\" name=\"{}\" time=\"{:.3f}\">{}</testcase>\n", file,
                             outcome.name.empty() ? file : EscapeXml(outcome.name), GetSeconds(outcome),
                             GetVerdict(outcome));
    }
    return fmt::format(
        "<testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"{}\" skipped=\"{}\" "
        "time=\"{:.3f}\">\n{}</testsuite>\n",
        file, outcomes.size(), count(State::Failed), count(State::NoTests), count(State::NotRun), seconds,
        cases);
}

}  // namespace

std::string nxTrialReports::GetJunit(const std::vector<nxTrialOutcome>& outcomes)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
    for (auto begin = outcomes.begin(); begin != outcomes.end();) {
        const auto end = std::find_if(begin, outcomes.end(), [&](const nxTrialOutcome& outcome) {
            return outcome.file != begin->file;
        });
        text += GetSuite({begin, end});
        begin = end;
    }
    return text + "</testsuites>\n";
}

std::string nxTrialReports::GetJson(const std::vector<nxTrialOutcome>& outcomes)
{
    constexpr const char* states[] = {"passed", "failed", "not run", "no tests"};
    Json tests = Json::array();
    for (const nxTrialOutcome& outcome : outcomes) {
        Json faults = Json::array();
        for (const nxTrialOutcome::Fault& fault : outcome.faults)
            faults.push_back({{"line", fault.line}, {"message", fault.text}});
        tests.push_back({{"file", outcome.file},
                         {"name", outcome.name.empty() ? Json() : Json(outcome.name)},
                         {"state", states[static_cast<std::size_t>(outcome.state)]},
                         {"seconds", GetSeconds(outcome)},
                         {"faults", faults}});
    }
    return WriteDown(tests, 2) + "\n";
}
