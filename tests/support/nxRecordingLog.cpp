#include "tests/support/nxRecordingLog.h"

#include "base/log/nxLog.h"
#include "base/log/nxLogEntriesQueue.h"
#include "base/log/nxLogManager.h"

nxRecordingLog::nxRecordingLog() : _earlier(nxLogManager::GetLevel())
{
    nxLogManager::SetLevel(nxLogLevel::Detail);
    nxLogManager::GetLogEntriesQueue().AddDevice(this);
}

nxRecordingLog::~nxRecordingLog()
{
    nxLogManager::GetLogEntriesQueue().RemoveDevice(this);
    nxLogManager::SetLevel(_earlier);
}

std::string nxRecordingLog::TakeLines()
{
    std::string all;
    for (const std::string& line : lines)
        all += line + "\n";
    lines.clear();
    return all;
}

void nxRecordingLog::Write(const nxLog& log)
{
    lines.push_back(std::to_string(log.GetLogLevel().GetValue()) + " " + std::string(log.GetLogEntry()));
}
