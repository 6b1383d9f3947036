#pragma once

#include <string>

// Names that hosts reserve for playback among the parameters of a job. The library reads none of them.
namespace nxPlaybackParameter {
inline const std::string BackTestingEnabled = "$backTestingEnabled";
inline const std::string BackTestingStartTime = "$backTestingStartTime";
inline const std::string BackTestingEndTime = "$backTestingEndTime";
inline const std::string BackTestingSpeedMultiplier = "$backTestingSpeedMultiplier";
inline const std::string ClassroomPlaybackEnabled = "$classroomPlaybackEnabled";
inline const std::string ClassroomNumber = "$classroomNumber";
}  // namespace nxPlaybackParameter
