#pragma once

#include "base/log/nxAsyncLogDevice.h"

// Writes the log to standard error; standard output belongs to the program's results.
class nxConsoleLogDevice : public nxAsyncLogDevice
{
public:
    nxConsoleLogDevice();
};
