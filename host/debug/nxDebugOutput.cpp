#include "host/debug/nxDebugOutput.h"

#include <fmt/format.h>

#include <cstdio>
#include <utility>

#include "base/log/nxLog.h"

void nxDebugOutput::Write(std::string_view text)
{
    constexpr std::size_t much = 16 * 1024;
    _text += text;
    if (_text.size() > much) HandOn();
}

void nxDebugOutput::HandOn()
{
    if (_text.empty()) return;
    const std::string text = std::exchange(_text, {});
    const unsigned long long place = std::exchange(_place, _place + text.size());
    _take(place, text);
}

// A script's own print goes the same way, and what it has printed comes first.
std::streamsize nxDebugOutput::xsputn(const char* bytes, std::streamsize size)
{
    std::fflush(stdout);
    Write({bytes, static_cast<std::size_t>(size)});
    return size;
}

nxDebugOutput::int_type nxDebugOutput::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const char byte = traits_type::to_char_type(character);
    xsputn(&byte, 1);
    return character;
}

void nxDebugLogDevice::Write(const nxLog& log)
{
    const nxTimeStamp& time = log.GetTimeStamp();
    _output.Write(fmt::format("{}.{:03} {} {}\n", time.GetAsDateTime().GetAsString(), time.GetMilliseconds(),
                              log.GetLogLevel().GetAsString(), log.GetLogEntry()));
}
