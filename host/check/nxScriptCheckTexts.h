#pragma once

#include <string>

// The Lua files of this folder, put in at build time.
const std::string& nxScriptCheckApiText();
const std::string& nxScriptCheckNamesText();
const std::string& nxScriptCheckTypesText();
const std::string& nxScriptCheckValuesText();
const std::string& nxScriptCheckUsesText();
const std::string& nxScriptCheckRulesText();
const std::string& nxScriptCheckOperandsText();
const std::string& nxScriptCheckNilsText();
const std::string& nxScriptCheckHabitsText();
const std::string& nxScriptCheckAnalyzeText();
const std::string& nxScriptCheckDryRunText();
