#pragma once

#include <source_location>

#include "base/log/nxLog.h"
#include "base/log/nxLogManager.h"

// A level together with the place that names it.
struct nxLogAt
{
    const nxLogLevelEnum& level;
    std::source_location where;

    nxLogAt(const nxLogLevelEnum& logLevel, std::source_location location = std::source_location::current())
        : level(logLevel), where(location)
    {
    }
};

// Logs a line made of `parts`; the one way in which lines are written. Nothing is formatted for a level that
// is off.
template <class... Parts>
void nxLogMessage(const nxLogAt& at, const Parts&... parts)
{
    if (!nxLogManager::ShouldLog(at.level)) return;
    nxLog log(at.level, at.where.file_name(), at.where.line());
    static_cast<void>((log << ... << parts));
    log << nxLog::nxLogTerminator();
}
