#include "base/values/nxStringHelper.h"
#include "host/jobs/nxHostJob.h"
#include "host/jobs/nxNewsServices.h"
#include "host/jobs/nxOutputServices.h"
#include "host/jobs/nxTimerServices.h"
#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

void nxHostJob::_NoteChange(bool& change)
{
    change = true;
    _services.news->NoteChange(*this);
}

const nxVorantJobStatus& nxHostJob::GetStatus()
{
    if (!_outputsJoined)
        _status.SetOutputParameters(nxVorantAlgorithmSpec::JoinParametersToUserString(_outputs));
    _outputsJoined = true;
    return _status;
}

void nxHostJob::LogText(const std::string& text)
{
    _services.output->LogText(*this, text);
    _services.output->Record(*this, "log", {{"text", text}});
}

void nxHostJob::SendUserState(const nxLogLevelEnum& level, const std::string& text)
{
    const char* const name = level == nxLogLevel_Error ? "ERROR" : level == nxLogLevel_Warn ? "WARN" : "INFO";
    _services.output->LogText(*this, std::string(name) + " " + text);
    _services.output->Record(*this, "state", {{"level", name}, {"text", text}});
    if (_status.GetUserStateLevel() == level && _status.GetUserStateText() == text) return;
    _status.SetUserStateLevel(level);
    _status.SetUserStateText(text);
    _NoteChange(_changes.status);
}

void nxHostJob::_SendUserText(const char* type, void (nxVorantJobStatus::*set)(const std::string&),
                              const std::string& (nxVorantJobStatus::*get)() const, const std::string& text)
{
    _services.output->Record(*this, type, {{"text", text}});
    if ((_status.*get)() == text) return;
    (_status.*set)(text);
    _NoteChange(_changes.status);
}

void nxHostJob::SendUserText1(const std::string& text)
{
    _SendUserText("text1", &nxVorantJobStatus::SetUserText1, &nxVorantJobStatus::GetUserText1, text);
}

void nxHostJob::SendUserText2(const std::string& text)
{
    _SendUserText("text2", &nxVorantJobStatus::SetUserText2, &nxVorantJobStatus::GetUserText2, text);
}

void nxHostJob::SendUserText3(const std::string& text)
{
    _SendUserText("text3", &nxVorantJobStatus::SetUserText3, &nxVorantJobStatus::GetUserText3, text);
}

bool nxHostJob::SendUserLog(const std::map<std::string, std::string>& fields, std::string&)
{
    _services.output->Record(*this, "userLog", {{"fields", &fields}});
    return true;
}

bool nxHostJob::SetParameter(const std::string& name, const std::string& value)
{
    _services.output->Record(*this, "outputParameter", {{"name", name}, {"value", value}});
    const auto [output, isNew] = _outputs.try_emplace(name);
    if (!isNew && output->second == value) return true;
    output->second = value;
    _outputsJoined = false;
    _NoteChange(_changes.rest);
    return true;
}

void nxHostJob::PublishParameter(const std::string& name, const std::string& value)
{
    _services.output->Record(*this, "published", {{"name", name}, {"value", value}});
}

void nxHostJob::SendParameter(const std::string& tag, const std::string& name, const std::string& value)
{
    _services.output->Record(*this, "sent", {{"tag", tag}, {"name", name}, {"value", value}});
    _services.news->SetDynamicParameter(tag, name, value);
}

std::string nxHostJob::GetDynamicParameter(const std::string& tag, std::string name)
{
    return _services.news->GetDynamicParameter(tag, name);
}

void nxHostJob::StartTimer(const std::string& name, unsigned int milliseconds)
{
    _services.output->Record(*this, "timerStart", {{"name", name}, {"interval", milliseconds}});
    _services.timers->StartTimer(*this, name, milliseconds);
}

void nxHostJob::StopTimer(const std::string& name)
{
    _services.output->Record(*this, "timerStop", {{"name", name}});
    _services.timers->StopTimer(*this, name);
}

void nxHostJob::Shutdown()
{
    _services.output->Record(*this, "shutdown", {});
    _services.news->NoteShutdown(*this);
}

void nxHostJob::SetTag(const std::string& tag)
{
    _services.output->Record(*this, "tag", {{"text", tag}});
    _tag = tag;
}

void nxHostJob::SetReference(const std::string& text)
{
    _services.output->Record(*this, "reference", {{"text", text}});
    if (_reference == text) return;
    _reference = text;
    _NoteChange(_changes.rest);
}

// The order strings, the switches and the chart are for those who read the record.
void nxHostJob::SetOrderUserString(const std::string& text)
{
    _orderUserString = text;
    _services.output->Record(*this, "orderUserString1", {{"text", text}});
}

void nxHostJob::SetOrderUserString2(const std::string& text)
{
    _orderUserString2 = text;
    _services.output->Record(*this, "orderUserString2", {{"text", text}});
}

void nxHostJob::_RecordFlag(const char* name, bool on)
{
    _services.output->Record(*this, "flag", {{"name", name}, {"value", on}});
}

void nxHostJob::SetShatterOnExit(bool on)
{
    _shatters = on;
    _RecordFlag("shatterOnExit", on);
}

void nxHostJob::SetEnableCrossProtection(bool on)
{
    _crossProtected = on;
    _RecordFlag("enableCrossProtection", on);
}

void nxHostJob::SetDisableParentFills(bool on)
{
    _RecordFlag("disableParentFills", on);
}

void nxHostJob::SetDisableReport(bool on)
{
    _RecordFlag("disableReport", on);
}

void nxHostJob::SetEnablePandL(bool on)
{
    _RecordFlag("enablePandL", on);
}

bool nxHostJob::SetChartLine(const std::string& chart, const std::string& line, double value,
                             unsigned int colour)
{
    _services.output->Record(*this, "chartLine",
                             {{"chart", chart}, {"line", line}, {"value", value}, {"colour", colour}});
    return true;
}

bool nxHostJob::RemoveChartLine(const std::string& chart, const std::string& line)
{
    _services.output->Record(*this, "removeChartLine", {{"chart", chart}, {"line", line}});
    return true;
}

nxVorantParameter* nxHostJob::GetParameter(const std::string& id) const
{
    const nxVorantParameter* parameter = _options.parameters.Find(id);
    return parameter == nullptr ? nullptr : parameter->CopyInstance();
}

unsigned int nxHostJob::GetSelectedVolume() const
{
    return _selection.volume.IsValid() ? _selection.volume.GetValue() : 0;
}

void nxHostJob::SetSelectedPrice(const double& price)
{
    _services.output->Record(*this, "selectedPrice", {{"price", price}});
    if (price == _selectedPrice) return;
    _selectedPrice = price;
    // Null where it is none: others are shown a decimal.
    static_cast<void>(_selection.price.SetFromString(nxStringHelper::GetAsString(price)));
    _NoteChange(_changes.rest);
}
