#include "host/debug/nxDapStream.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <string_view>

#include "host/debug/nxBoundedJson.h"

namespace {

constexpr std::size_t MostHeader = 4096;  // bytes
constexpr std::size_t MostMessage = std::size_t{1} << 24;

// Also while only a part of it is there.
bool IsHeader(std::string_view line)
{
    const std::string_view name = line.substr(0, line.find(':'));
    return std::ranges::all_of(name, [](unsigned char c) { return std::isalnum(c) || c == '-'; });
}

}  // namespace

void nxDapStream::_Fail(const std::string& failure)
{
    _isOver = true;
    if (_failure.empty()) _failure = failure;
}

void nxDapStream::Read()
{
    char block[64 * 1024];
    const ssize_t count = read(_input, block, sizeof block);
    if (count > 0)
        _text.append(block, static_cast<std::size_t>(count));
    else if (count == 0 || errno != EINTR)
        _isOver = true;
}

// False: it is not whole yet, or none.
bool nxDapStream::_ReadHeader()
{
    constexpr std::string_view lineEnd = "\r\n";
    constexpr std::string_view name = "Content-Length:";
    std::optional<std::size_t> length;
    for (std::size_t begin = 0;;) {
        const std::size_t end = _text.find(lineEnd, begin);
        const std::string_view line = std::string_view(_text).substr(begin, end - begin);
        if (!IsHeader(line) || begin + line.size() > MostHeader) {
            _Fail("what comes in is no message of the debug adapter protocol: it has no header");
            return false;
        }
        if (end == _text.npos) return false;
        begin = end + lineEnd.size();
        if (line.empty()) {
            if (!length) _Fail("a message has no Content-Length");
            _text.erase(0, begin);
            _length = length;
            return length.has_value();
        }
        if (!line.starts_with(name)) continue;
        const std::string_view digits =
            line.substr(std::min(line.find_first_not_of(' ', name.size()), line.size()));
        const char* const last = digits.data() + digits.size();
        const auto [rest, error] = std::from_chars(digits.data(), last, length.emplace());
        if (error == std::errc() && rest == last && *length <= MostMessage) continue;
        _Fail("Content-Length is no number up to 16777216");
        return false;
    }
}

std::optional<nxDapStream::Json> nxDapStream::Next()
{
    if (!_failure.empty() || (!_length && (_text.empty() || !_ReadHeader()))) return std::nullopt;
    if (_text.size() < *_length) return std::nullopt;
    const std::string text = _text.substr(0, *_length);
    _text.erase(0, *_length);
    _length.reset();
    Json message = nxReadBoundedJson(text);
    if (!message.is_object()) message = Json(Json::value_t::discarded);
    return message;
}

void nxDapStream::Send(Json message)
{
    message["seq"] = ++_sent;
    const std::string text = message.dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::string whole = "Content-Length: " + std::to_string(text.size()) + "\r\n\r\n" + text;
    for (std::size_t done = 0; done < whole.size();) {
        const ssize_t count = write(_output, whole.data() + done, whole.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) {
            _isOver = true;
            return;
        }
        done += static_cast<std::size_t>(count);
    }
}
