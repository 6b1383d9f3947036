#include "base/log/nxAsyncLogDevice.h"

#include <fmt/format.h>
#include <spdlog/async.h>
#include <spdlog/sinks/sink.h>

#include <iterator>
#include <utility>

#include "base/log/nxLog.h"

nxAsyncLogDevice::~nxAsyncLogDevice()
{
    nxAsyncLogDevice::Destroy();
}

void nxAsyncLogDevice::_Start(std::shared_ptr<spdlog::sinks::sink> sink)
{
    Destroy();
    constexpr std::size_t linesPending = 1024;  // some 400 bytes each, from the start
    _sink = std::move(sink);
    _sink->set_pattern("%v");
    _thread = std::make_shared<spdlog::details::thread_pool>(linesPending, 1);
    _logger =
        std::make_shared<spdlog::async_logger>("", _sink, _thread, spdlog::async_overflow_policy::block);
}

nxErrorEnum nxAsyncLogDevice::Destroy()
{
    _thread.reset();  // joins, when all that is pending has been written
    _logger.reset();
    if (_sink != nullptr) _sink->flush();
    _sink.reset();
    return {};
}

void nxAsyncLogDevice::Write(const nxLog& log)
{
    if (_logger == nullptr) return;
    const nxTimeStamp& time = log.GetTimeStamp();
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), "{}.{:03} {} {}", time.GetAsDateTime().GetAsString(),
                   time.GetMilliseconds(), log.GetLogLevel().GetAsString(), log.GetLogEntry());
    _logger->log(spdlog::level::info, spdlog::string_view_t(line.data(), line.size()));
}

void nxAsyncLogDevice::Flush()
{
    if (_sink == nullptr) return;
    // The thread has no operation that waits for it; ending it does.
    auto sink = _sink;
    _Start(std::move(sink));
}
