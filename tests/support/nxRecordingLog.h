#pragma once

#include <string>
#include <vector>

#include "base/enums/nxLogLevelEnum.h"
#include "base/log/nxLogDevice.h"

// Keeps each line logged during its life as "level text", from the lowest level on.
class nxRecordingLog : public nxLogDevice
{
public:
    nxRecordingLog();
    ~nxRecordingLog() override;
    nxRecordingLog(const nxRecordingLog&) = delete;
    nxRecordingLog& operator=(const nxRecordingLog&) = delete;

    std::vector<std::string> lines;

    // The lines since the last time, each ended by a line feed.
    std::string TakeLines();

    nxErrorEnum Destroy() override { return {}; }
    void Write(const nxLog& log) override;
    void Flush() override {}

private:
    nxLogLevelEnum _earlier;
};
