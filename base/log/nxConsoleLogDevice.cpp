#include "base/log/nxConsoleLogDevice.h"

#include <spdlog/sinks/stdout_sinks.h>

nxConsoleLogDevice::nxConsoleLogDevice()
{
    _Start(std::make_shared<spdlog::sinks::stderr_sink_mt>());
}
