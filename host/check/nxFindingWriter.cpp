#include "host/check/nxFindingWriter.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <set>

#include "host/check/nxFindingRule.h"

using Json = nlohmann::ordered_json;

namespace {

void WriteDocument(const Json& document, std::ostream& out)
{
    out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

// A path as a URI, relative where the path is.
std::string MakeUri(const std::string& path)
{
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr const char* digits = "0123456789ABCDEF";
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (plain.find(c) != std::string_view::npos)
            uri += c;
        else
            uri += {'%', digits[byte / 16], digits[byte % 16]};
    }
    return uri;
}

Json MakeSarifRules()
{
    Json rules = Json::array();
    for (const nxFindingRule& rule : nxFindingRule::GetAll())
        rules.push_back({{"id", std::to_string(rule.number)},
                         {"name", rule.code},
                         {"shortDescription", {{"text", rule.why}}},
                         {"help", {{"text", std::string(rule.why) + " " + rule.GetSilence()}}}});
    return rules;
}

Json MakeSarifResult(const nxScriptFinding& finding)
{
    const nxFindingRule& rule = nxFindingRule::Find(finding.code);
    Json place = {{"artifactLocation", {{"uri", MakeUri(finding.file)}}}};
    // Both count from 1, and what follows the end is told.
    if (finding.line > 0) place["region"]["startLine"] = finding.line;
    if (finding.column > 0) place["region"]["startColumn"] = finding.column;
    if (finding.column > 0 && finding.endColumn > 0) place["region"]["endColumn"] = finding.endColumn + 1;
    return {{"ruleId", std::to_string(rule.number)},
            {"ruleIndex", &rule - nxFindingRule::GetAll().data()},
            {"level", "warning"},
            {"message", {{"text", finding.message}}},
            {"locations", Json::array({Json{{"physicalLocation", place}}})}};
}

}  // namespace

void nxFindingWriter::WriteLine(const nxScriptFinding& finding, std::ostream& out)
{
    out << finding.file << ':' << finding.line << ':' << finding.column << ": " << finding.message << " ["
        << nxFindingRule::Find(finding.code).number << "]\n";
}

void nxFindingWriter::WriteText(std::ostream& out) const
{
    std::set<unsigned int> numbers;
    for (const nxScriptFinding& finding : _findings) {
        numbers.insert(nxFindingRule::Find(finding.code).number);
        WriteLine(finding, out);
    }
    if (!numbers.empty()) out << '\n';
    for (const nxFindingRule& rule : nxFindingRule::GetAll())
        if (numbers.contains(rule.number))
            out << '[' << rule.number << "] " << rule.why << ' ' << rule.GetSilence() << '\n';
}

void nxFindingWriter::WriteJson(std::ostream& out) const
{
    Json array = Json::array();
    for (const nxScriptFinding& finding : _findings) {
        const nxFindingRule& rule = nxFindingRule::Find(finding.code);
        Json object = {{"file", finding.file}, {"line", finding.line}, {"column", finding.column}};
        if (finding.endColumn != 0) object["endColumn"] = finding.endColumn;
        object["number"] = rule.number;
        object["code"] = finding.code;
        object["message"] = finding.message;
        object["why"] = rule.why;
        object["silence"] = rule.GetSilence();
        array.push_back(std::move(object));
    }
    WriteDocument(array, out);
}

void nxFindingWriter::WriteSarif(std::ostream& out) const
{
    Json results = Json::array();
    for (const nxScriptFinding& finding : _findings)
        results.push_back(MakeSarifResult(finding));
    const Json driver = {{"name", "algoserver check"}, {"version", NX_VERSION}, {"rules", MakeSarifRules()}};
    const Json run = {
        {"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", results}};
    WriteDocument({{"$schema",
                    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/"
                    "sarif-schema-2.1.0.json"},
                   {"version", "2.1.0"},
                   {"runs", Json::array({run})}},
                  out);
}
