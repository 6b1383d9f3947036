#pragma once

#include <memory>

#include "base/log/nxLogDevice.h"

namespace spdlog {
class logger;
namespace sinks {
class sink;
}
namespace details {
class thread_pool;
}
}  // namespace spdlog

// What the console and the file device share: lines "YYYYMMDD:HH:MM:SS.mmm LEVEL text", with the line's own
// time stamp, written by a thread of the device's own. The writer of a line waits only when the device is
// a thousand lines behind; no line is lost.
class nxAsyncLogDevice : public nxLogDevice
{
public:
    ~nxAsyncLogDevice() override;
    nxErrorEnum Destroy() override;
    void Write(const nxLog& log) override;
    // Returns when the lines so far have reached the console or the file.
    void Flush() override;

protected:
    nxAsyncLogDevice() = default;
    // Begins to write to `sink`; an earlier one is let go.
    void _Start(std::shared_ptr<spdlog::sinks::sink> sink);

private:
    std::shared_ptr<spdlog::sinks::sink> _sink;
    std::shared_ptr<spdlog::details::thread_pool> _thread;
    std::shared_ptr<spdlog::logger> _logger;
};
