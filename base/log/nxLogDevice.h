#pragma once

#include "base/enums/nxErrorEnum.h"

class nxLog;

// Somewhere that log lines go. The entries queue calls a device under its lock, one line at a time; a device
// must not log by itself.
class nxLogDevice
{
public:
    virtual ~nxLogDevice() = default;
    // Writes out what is pending and lets go of what is open; lines written later are lost. May be called
    // twice.
    virtual nxErrorEnum Destroy() = 0;
    // Takes a line; `log` is good for the call only.
    virtual void Write(const nxLog& log) = 0;
    // Brings the lines so far to where they go.
    virtual void Flush() = 0;
};
