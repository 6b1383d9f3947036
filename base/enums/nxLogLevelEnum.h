#pragma once

#include "base/enums/nxEnumRange.h"

// The weight of a log line; the greater, the graver.
class nxLogLevelEnum final : public nxEnumRange<nxLogLevelEnum, 30, 39>
{
public:
    using nxEnumRange::nxEnumRange;
    using nxEnumRange::operator=;

    std::string GetClassName() const override { return "nxLogLevelEnum"; }
};

// The levels as constants, to be named where a line is logged.
namespace nxLogLevel {
inline constexpr nxLogLevelEnum Detail{nxLogLevel_Detail};
inline constexpr nxLogLevelEnum Info{nxLogLevel_Info};
inline constexpr nxLogLevelEnum Notice{nxLogLevel_Notice};
inline constexpr nxLogLevelEnum Audit{nxLogLevel_Audit};
inline constexpr nxLogLevelEnum Attention{nxLogLevel_Attention};
inline constexpr nxLogLevelEnum Warn{nxLogLevel_Warn};
inline constexpr nxLogLevelEnum Error{nxLogLevel_Error};
inline constexpr nxLogLevelEnum Fatal{nxLogLevel_Fatal};
}  // namespace nxLogLevel
