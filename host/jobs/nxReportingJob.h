#pragma once

#include <map>
#include <string>

#include "base/records/nxVorantJobStatus.h"
#include "host/jobs/nxLaunchedJob.h"

// What a job tells of itself: its log, its texts and state, its output parameters and its chart, to those who
// watch the run, to the run's record, and to the jobs that watch it. Used on the run's thread.
class nxReportingJob : public nxLaunchedJob
{
public:
    nxReportingJob(const nxHostServices& services, const nxJobOptions& options, unsigned int index,
                   const std::string& logName);

    const nxVorantJobStatus& GetStatus();
    const std::string& GetReference() const { return _reference; }

    void LogText(const std::string& text) override;
    void SendUserState(const nxLogLevelEnum& level, const std::string& text) override;
    void SendUserText1(const std::string& text) override;
    void SendUserText2(const std::string& text) override;
    void SendUserText3(const std::string& text) override;
    bool SendUserLog(const std::map<std::string, std::string>& fields, std::string& error) override;
    bool SetParameter(const std::string& name, const std::string& value) override;
    void PublishParameter(const std::string& name, const std::string& value) override;
    void SetTag(const std::string& tag) override;
    std::string GetTag() override { return _tag; }
    void SetReference(const std::string& text) override;
    void SetDisableParentFills(bool on) override;
    void SetDisableReport(bool on) override;
    void SetEnablePandL(bool on) override;
    bool SetChartLine(const std::string& chart, const std::string& line, double value,
                      unsigned int colour) override;
    bool RemoveChartLine(const std::string& chart, const std::string& line) override;

protected:
    void _ShowTransactionCount(unsigned int count);
    void _RecordFlag(const char* name, bool on);

private:
    void _SendUserText(const char* type, void (nxVorantJobStatus::*set)(const std::string&),
                       const std::string& (nxVorantJobStatus::*get)() const, const std::string& text);

    std::string _tag;
    std::string _reference;
    nxVorantJobStatus _status;  // its output parameters are behind while _outputsJoined is false
    std::map<std::string, std::string> _outputs;
    bool _outputsJoined = true;
};
