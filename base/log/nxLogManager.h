#pragma once

#include <atomic>

#include "base/enums/nxLogLevelEnum.h"

class nxLogEntriesQueue;

// Which levels are logged and where lines go. All operations may be called from any thread.
class nxLogManager
{
public:
    // True for a level at or above the threshold, which is nxLogLevel::Info at the start. Cheap enough to
    // stand before every line: one load and one comparison.
    static bool ShouldLog(const nxLogLevelEnum& level)
    {
        return level.GetValue() >= _threshold.load(std::memory_order_relaxed);
    }
    // The lowest level to be logged. An undefined one logs everything.
    static void SetLevel(const nxLogLevelEnum& level)
    {
        _threshold.store(level.GetValue(), std::memory_order_relaxed);
    }
    static nxLogLevelEnum GetLevel() { return _threshold.load(std::memory_order_relaxed); }

    // The one queue of the process; never destroyed, so that late lines find it.
    static nxLogEntriesQueue& GetLogEntriesQueue();

private:
    inline static constinit std::atomic<unsigned int> _threshold{nxLogLevel_Info};
};
