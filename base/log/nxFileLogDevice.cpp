#include "base/log/nxFileLogDevice.h"

#include <spdlog/sinks/rotating_file_sink.h>

nxErrorEnum nxFileLogDevice::Open(const std::string& path, std::size_t maxFileSize, std::size_t filesKept)
{
    try {
        _Start(std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, maxFileSize, filesKept));
        return {};
    } catch (const std::exception&) {
        return nxError_LogFileFailed;
    }
}
