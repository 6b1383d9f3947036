#include "host/jobs/nxReportingJob.h"

#include "host/jobs/nxOutputServices.h"
#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

nxReportingJob::nxReportingJob(const nxHostServices& services, const nxJobOptions& options,
                               unsigned int index, const std::string& logName)
    : nxLaunchedJob(services, options, index, logName)
{
    _status.SetJobID(index + 1);
    _status.SetJobName(options.name);
    _status.SetScriptName(options.script);
}

const nxVorantJobStatus& nxReportingJob::GetStatus()
{
    if (!_outputsJoined)
        _status.SetOutputParameters(nxVorantAlgorithmSpec::JoinParametersToUserString(_outputs));
    _outputsJoined = true;
    return _status;
}

void nxReportingJob::LogText(const std::string& text)
{
    GetServices().output->LogText(*this, text);
    Record("log", {{"text", text}});
}

void nxReportingJob::SendUserState(const nxLogLevelEnum& level, const std::string& text)
{
    const char* const name = level == nxLogLevel_Error ? "ERROR" : level == nxLogLevel_Warn ? "WARN" : "INFO";
    GetServices().output->LogText(*this, std::string(name) + " " + text);
    Record("state", {{"level", name}, {"text", text}});
    if (_status.GetUserStateLevel() == level && _status.GetUserStateText() == text) return;
    _status.SetUserStateLevel(level);
    _status.SetUserStateText(text);
    _NoteChange(&Changes::status);
}

void nxReportingJob::_SendUserText(const char* type, void (nxVorantJobStatus::*set)(const std::string&),
                                   const std::string& (nxVorantJobStatus::*get)() const,
                                   const std::string& text)
{
    Record(type, {{"text", text}});
    if ((_status.*get)() == text) return;
    (_status.*set)(text);
    _NoteChange(&Changes::status);
}

void nxReportingJob::SendUserText1(const std::string& text)
{
    _SendUserText("text1", &nxVorantJobStatus::SetUserText1, &nxVorantJobStatus::GetUserText1, text);
}

void nxReportingJob::SendUserText2(const std::string& text)
{
    _SendUserText("text2", &nxVorantJobStatus::SetUserText2, &nxVorantJobStatus::GetUserText2, text);
}

void nxReportingJob::SendUserText3(const std::string& text)
{
    _SendUserText("text3", &nxVorantJobStatus::SetUserText3, &nxVorantJobStatus::GetUserText3, text);
}

bool nxReportingJob::SendUserLog(const std::map<std::string, std::string>& fields, std::string&)
{
    Record("userLog", {{"fields", &fields}});
    return true;
}

bool nxReportingJob::SetParameter(const std::string& name, const std::string& value)
{
    Record("outputParameter", {{"name", name}, {"value", value}});
    const auto [output, isNew] = _outputs.try_emplace(name);
    if (!isNew && output->second == value) return true;
    output->second = value;
    _outputsJoined = false;
    _NoteChange(&Changes::rest);
    return true;
}

void nxReportingJob::PublishParameter(const std::string& name, const std::string& value)
{
    Record("published", {{"name", name}, {"value", value}});
}

void nxReportingJob::SetTag(const std::string& tag)
{
    Record("tag", {{"text", tag}});
    _tag = tag;
}

void nxReportingJob::SetReference(const std::string& text)
{
    Record("reference", {{"text", text}});
    if (_reference == text) return;
    _reference = text;
    _NoteChange(&Changes::rest);
}

void nxReportingJob::_ShowTransactionCount(unsigned int count)
{
    _status.SetTransactionCount(count);
    _NoteChange(&Changes::status);
}

// The switches and the chart are for those who read the record.
void nxReportingJob::_RecordFlag(const char* name, bool on)
{
    Record("flag", {{"name", name}, {"value", on}});
}

void nxReportingJob::SetDisableParentFills(bool on)
{
    _RecordFlag("disableParentFills", on);
}

void nxReportingJob::SetDisableReport(bool on)
{
    _RecordFlag("disableReport", on);
}

void nxReportingJob::SetEnablePandL(bool on)
{
    _RecordFlag("enablePandL", on);
}

bool nxReportingJob::SetChartLine(const std::string& chart, const std::string& line, double value,
                                  unsigned int colour)
{
    Record("chartLine", {{"chart", chart}, {"line", line}, {"value", value}, {"colour", colour}});
    return true;
}

bool nxReportingJob::RemoveChartLine(const std::string& chart, const std::string& line)
{
    Record("removeChartLine", {{"chart", chart}, {"line", line}});
    return true;
}
