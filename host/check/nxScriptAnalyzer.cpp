#include "host/check/nxScriptAnalyzer.h"

#include "host/author/nxScriptMembers.h"
#include "host/check/nxFindingRule.h"
#include "host/check/nxScriptCheckTexts.h"

using Self = nxScriptAnalysis;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"count", &Self::count}, {"isTest", &Self::isTest}, {"path", &Self::path},
    {"text", &Self::text},   {"add", &Self::add},       {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {nullptr, nullptr, nullptr},
};

bool nxScriptAnalysis::count(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(static_cast<unsigned int>(_files.size()));
    return true;
}

bool nxScriptAnalysis::isTest(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(_isTest);
    return true;
}

bool nxScriptAnalysis::path(nxLuaParameters& parameters, nxLuaResults& results)
{
    results.Add(_files.at(parameters.Parameter(1).GetUnsigned() - 1).path);
    return true;
}

bool nxScriptAnalysis::text(nxLuaParameters& parameters, nxLuaResults& results)
{
    results.Add(_files.at(parameters.Parameter(1).GetUnsigned() - 1).text);
    return true;
}

bool nxScriptAnalysis::add(nxLuaParameters& parameters, nxLuaResults&)
{
    nxScriptFinding finding;
    finding.file = _files.at(parameters.Parameter(1).GetUnsigned() - 1).path;
    finding.line = parameters.Parameter(2).GetUnsigned();
    finding.column = parameters.Parameter(3).GetUnsigned();
    finding.endColumn = parameters.Parameter(4).GetUnsigned();
    finding.code = parameters.Parameter(5).GetString();
    finding.message = parameters.Parameter(6).GetString();
    findings.push_back(std::move(finding));
    return true;
}

bool nxScriptAnalyzer::Load(std::string& error)
{
    const std::string members = nxScriptMembersText() + nxFindingRule::GetNumbersText();
    const std::string* const texts[] = {&members,
                                        &nxScriptCheckApiText(),
                                        &nxScriptCheckNamesText(),
                                        &nxScriptCheckTypesText(),
                                        &nxScriptCheckValuesText(),
                                        &nxScriptCheckUsesText(),
                                        &nxScriptCheckRulesText(),
                                        &nxScriptCheckOperandsText(),
                                        &nxScriptCheckNilsText(),
                                        &nxScriptCheckHabitsText(),
                                        &nxScriptCheckAnalyzeText()};
    for (const std::string* text : texts) {
        if (_engine.LoadText(*text)) continue;
        error = _engine.GetLastError();
        if (error.find("module 'luacheck") != std::string::npos)
            error =
                "the Lua module luacheck is missing, on which the check stands; the Debian package lua-check "
                "has "
                "it: apt-get install lua-check";
        return false;
    }
    return true;
}

bool nxScriptAnalyzer::Analyze(const std::vector<nxScriptAnalysis::File>& files, bool isTest,
                               std::vector<nxScriptFinding>& findings, std::string& error)
{
    nxScriptAnalysis analysis(files, isTest);
    nxLuaFunction analyze(_engine, "analyze");
    if (!analyze.Call(analysis)) {
        error = _engine.GetLastError();
        if (!error.starts_with("is too deep")) error = "the checker itself failed: " + error;
        return false;
    }
    findings = std::move(analysis.findings);
    return true;
}
