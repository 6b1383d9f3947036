#include <string_view>

#include "base/log/nxLogMessage.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/lua/nxScriptAccount.h"

namespace {

using Host = nxAlgoJobInterface;

// The functions that hand one text on to the host.
struct TextRow
{
    std::string_view function;
    const char* label;  // of the log line; null for none
    void (Host::*send)(const std::string&);
    const char* usage;
    bool isShown = false;  // to a person, so that it counts as log
};

constexpr TextRow Texts[] = {
    {"logText", nullptr, &Host::LogText, "logText requires 1 argument [text]", true},
    {"sendUserText1", nullptr, &Host::SendUserText1, "sendUserText1 requires 1 argument [text]", true},
    {"sendUserText2", nullptr, &Host::SendUserText2, "sendUserText2 requires 1 argument [text]", true},
    {"sendUserText3", nullptr, &Host::SendUserText3, "sendUserText3 requires 1 argument [text]", true},
    {"stopTimer", nullptr, &Host::StopTimer, "stopTimer requires 1 argument"},
    {"setOrderUserString", "SetOrderUserString ", &Host::SetOrderUserString,
     "setOrderUserString requires 1 argument [text]"},
    {"setOrderUserString2", "SetOrderUserString2 ", &Host::SetOrderUserString2,
     "setOrderUserString2 requires 1 argument [text]"},
};

// The functions that hand one boolean on to the host.
struct SwitchRow
{
    std::string_view function;
    void (Host::*set)(bool);
    const char* usage;
};

constexpr SwitchRow Switches[] = {
    {"setShatterOnExit", &Host::SetShatterOnExit, "setShatterOnExit requires 1 argument. true or false"},
    {"setEnableCrossProtection", &Host::SetEnableCrossProtection,
     "setEnableCrossProtection requires 1 argument [enable]"},
    {"setDisableParentFills", &Host::SetDisableParentFills,
     "setDisableParentFills requires 1 argument. true or false"},
    {"setDisableReport", &Host::SetDisableReport, "setDisableReport requires 1 argument. true or false"},
    {"setEnablePandL", &Host::SetEnablePandL, "setEnablePandL requires 1 argument. true or false"},
};

// Fails to compile for a function that has no row.
template <class Row, std::size_t count>
consteval const Row& Find(const Row (&rows)[count], std::string_view function)
{
    for (const Row& row : rows)
        if (row.function == function) return row;
    throw "no such row";
}

// Of a text that a person sees.
bool MayShow(nxLuaResults& results, std::size_t bytes)
{
    return results.Allows(nxScriptLimit::LogLine, bytes) && results.Adds(nxScriptLimit::Log, bytes);
}

bool SendText(const nxAlgoJobObject& job, const TextRow& row, nxLuaParameters& parameters,
              nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail(row.usage);
    const std::string text = parameters.Parameter(1).GetString();
    if (row.isShown && !MayShow(results, text.size())) return false;
    // The host may keep the latest.
    if (!results.Keeps(nxScriptLimit::Memory, std::string(row.function), text.size())) return false;
    if (row.label != nullptr) nxLogMessage(nxLogLevel::Info, job.GetLogPrefix(), row.label, text);
    (job.GetJob()->*row.send)(text);
    return true;
}

// No text holds a NUL.
std::string GetChartLineName(const std::string& chartID, const std::string& lineID)
{
    return chartID + '\0' + lineID;
}

bool Switch(const nxAlgoJobObject& job, const SwitchRow& row, nxLuaParameters& parameters,
            nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail(row.usage);
    const bool on = parameters.Parameter(1).GetBool();
    nxLogMessage(nxLogLevel::Info, job.GetLogPrefix(), row.function, " ", on);
    (job.GetJob()->*row.set)(on);
    return true;
}

}  // namespace

bool nxAlgoJobObject::logText(nxLuaParameters& parameters, nxLuaResults& results)
{
    return SendText(*this, Find(Texts, "logText"), parameters, results);
}

// An unknown level is no error: it counts as "INFO".
bool nxAlgoJobObject::sendUserState(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("sendUserState requires 2 arguments [level,text]");
    const std::string level = parameters.Parameter(1).GetString();
    const std::string text = parameters.Parameter(2).GetString();
    if (!MayShow(results, text.size())) return false;
    GetJob()->SendUserState(level == "ERROR"  ? nxLogLevel::Error
                            : level == "WARN" ? nxLogLevel::Warn
                                              : nxLogLevel::Info,
                            text);
    return true;
}

bool nxAlgoJobObject::sendUserText1(nxLuaParameters& parameters, nxLuaResults& results)
{
    return SendText(*this, Find(Texts, "sendUserText1"), parameters, results);
}

bool nxAlgoJobObject::sendUserText2(nxLuaParameters& parameters, nxLuaResults& results)
{
    return SendText(*this, Find(Texts, "sendUserText2"), parameters, results);
}

bool nxAlgoJobObject::sendUserText3(nxLuaParameters& parameters, nxLuaResults& results)
{
    return SendText(*this, Find(Texts, "sendUserText3"), parameters, results);
}

bool nxAlgoJobObject::sendUserLog(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail(
            "sendUserLog incorrect number of parameters. Requires a collection of parameters");
    const nxLuaParameter& parameter = parameters.Parameter(1);
    if (!parameter.IsTable()) return results.Fail("sendUserLog requires a collection of parameters");
    std::map<std::string, std::string> fields;
    if (!parameter.GetAsNameValueMap(fields))
        return results.Fail("sendUserLog incorrect collection of parameters");
    std::size_t bytes = 0;
    for (const auto& [name, value] : fields)
        bytes += name.size() + value.size();
    if (!MayShow(results, bytes)) return false;
    std::string error;
    return GetJob()->SendUserLog(fields, error) || results.Fail("sendUserLog error: " + error);
}

// The host defines the frequency's unit. A negative one reaches it as its low 32 bits.
bool nxAlgoJobObject::startTimer(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("startTimer requires 2 arguments");
    const std::string name = parameters.Parameter(1).GetString();
    const unsigned int frequency = parameters.Parameter(2).GetUnsigned();
    if (frequency == 0)
        return results.Fail("stopTimer : " + name + " . Invalid frequency has to be creater than 0");  // sic
    if (!results.Keeps(nxScriptLimit::Timers, name)) return false;
    GetJob()->StartTimer(name, frequency);
    return true;
}

bool nxAlgoJobObject::stopTimer(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (!SendText(*this, Find(Texts, "stopTimer"), parameters, results)) return false;
    results.GetAccount()->Drop(nxScriptLimit::Timers, parameters.Parameter(1).GetString());
    return true;
}

// Legal from any callback. The mutex is the callback's already.
bool nxAlgoJobObject::shutdown(nxLuaParameters&, nxLuaResults&)
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Shutdown job");
    _shutdownRequested = true;
    static_cast<void>(_engine.Stop());
    GetJob()->Shutdown();
    return true;
}

bool nxAlgoJobObject::setOrderUserString(nxLuaParameters& parameters, nxLuaResults& results)
{
    return SendText(*this, Find(Texts, "setOrderUserString"), parameters, results);
}

bool nxAlgoJobObject::setOrderUserString2(nxLuaParameters& parameters, nxLuaResults& results)
{
    return SendText(*this, Find(Texts, "setOrderUserString2"), parameters, results);
}

bool nxAlgoJobObject::setShatterOnExit(nxLuaParameters& parameters, nxLuaResults& results)
{
    return Switch(*this, Find(Switches, "setShatterOnExit"), parameters, results);
}

bool nxAlgoJobObject::setEnableCrossProtection(nxLuaParameters& parameters, nxLuaResults& results)
{
    return Switch(*this, Find(Switches, "setEnableCrossProtection"), parameters, results);
}

bool nxAlgoJobObject::setDisableParentFills(nxLuaParameters& parameters, nxLuaResults& results)
{
    return Switch(*this, Find(Switches, "setDisableParentFills"), parameters, results);
}

bool nxAlgoJobObject::setDisableReport(nxLuaParameters& parameters, nxLuaResults& results)
{
    return Switch(*this, Find(Switches, "setDisableReport"), parameters, results);
}

bool nxAlgoJobObject::setEnablePandL(nxLuaParameters& parameters, nxLuaResults& results)
{
    return Switch(*this, Find(Switches, "setEnablePandL"), parameters, results);
}

bool nxAlgoJobObject::getPandL(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("getPandL requires 1 argument currency");
    const std::string text = parameters.Parameter(1).GetString();
    nxCurrencyEnum currency;
    if (!currency.SetFromString(text)) {
        nxLogMessage(nxLogLevel::Error, GetLogPrefix(), "getPandL invalid currency");
        return results.Fail("getPandL. invalid currency : " + text);
    }
    results.Add(GetJob()->GetPandL(currency));
    return true;
}

// A refusal by the host, here and below, is an error with an empty text.
bool nxAlgoJobObject::setChartLine(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 4)
        return results.Fail("setChartLine requires 4 arguments. [ chartID, lineID, value, colour ]");
    const std::string chartID = parameters.Parameter(1).GetString();
    const std::string lineID = parameters.Parameter(2).GetString();
    const double value = parameters.Parameter(3).GetNumber();
    const unsigned int colour = parameters.Parameter(4).GetUnsigned();
    if (!results.Keeps(nxScriptLimit::ChartLines, GetChartLineName(chartID, lineID))) return false;
    return GetJob()->SetChartLine(chartID, lineID, value, colour);
}

bool nxAlgoJobObject::removeChartLine(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2)
        return results.Fail("setChartLine requires 2 arguments. [ chartID, lineID ]");  // sic
    const std::string chartID = parameters.Parameter(1).GetString();
    const std::string lineID = parameters.Parameter(2).GetString();
    if (!GetJob()->RemoveChartLine(chartID, lineID)) return false;
    results.GetAccount()->Drop(nxScriptLimit::ChartLines, GetChartLineName(chartID, lineID));
    return true;
}
