#include "host/feed/nxInputStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

constexpr std::size_t InputSize = 128 * 1024;

std::string GetSystemText(int error)
{
    return std::generic_category().message(error);
}

}  // namespace

nxInputStream::nxInputStream(std::function<bool()> givesUp) : _givesUp(std::move(givesUp)) {}

nxInputStream::~nxInputStream()
{
    if (_file > STDIN_FILENO) close(_file);
}

bool nxInputStream::Open(const std::string& path, const char* content)
{
    _file = path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (_file < 0 || fstat(_file, &status) != 0) {
        _failure = "cannot open: " + GetSystemText(errno);
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        _failure = std::string("is a directory, not a ") + content;
        return false;
    }
    _mayHaveToWait = !S_ISREG(status.st_mode);
    if (!_mayHaveToWait) _bytesTotal = static_cast<unsigned long long>(status.st_size);
    _input.resize(InputSize);
    // A pipe may hand out the first bytes one by one; the magic number needs four.
    while (!_inputOver && _inputEnd < nxDecoder::MagicSize) {
        if (!_FillInput()) return false;
    }
    _decoder = nxDecoder::Make(_input.data(), _inputEnd);
    return true;
}

std::optional<std::string> nxInputStream::ReadWhole(const std::string& path, const char* content,
                                                    std::string& text)
{
    nxInputStream stream;
    if (!stream.Open(path, content)) return stream._failure;
    std::vector<char> buffer(InputSize);
    for (;;) {
        const long long count = stream.Read(buffer.data(), buffer.size());
        if (count < 0) return stream._failure;
        if (count == 0) return std::nullopt;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

long long nxInputStream::Read(char* to, std::size_t size)
{
    if (!_failure.empty()) return -1;
    if (!_decoder) {
        if (_inputBegin == _inputEnd) return _inputOver ? 0 : _ReadFile(to, size);
        const std::size_t count = std::min(size, _inputEnd - _inputBegin);
        std::memcpy(to, _input.data() + _inputBegin, count);
        _inputBegin += count;
        return static_cast<long long>(count);
    }
    char* out = to;
    while (out == to) {
        if (_inputBegin == _inputEnd && !_inputOver && !_FillInput()) return -1;
        const char* in = _input.data() + _inputBegin;
        const bool fine = _decoder->Decode(in, _input.data() + _inputEnd, out, to + size, _failure);
        _inputBegin = static_cast<std::size_t>(in - _input.data());
        if (!fine) {
            if (out == to) return -1;
            break;
        }
        if (out == to && _inputOver && _inputBegin == _inputEnd) {
            if (_decoder->IsComplete()) return 0;
            _isCut = true;
            _failure =
                std::string("truncated ") + _decoder->GetName() + " data: the file stops before its end";
            return -1;
        }
    }
    return out - to;
}

// Called with nothing left in the buffer, or at the start to reach the magic number.
bool nxInputStream::_FillInput()
{
    if (_inputBegin == _inputEnd) _inputBegin = _inputEnd = 0;
    const long long count = _ReadFile(_input.data() + _inputEnd, _input.size() - _inputEnd);
    if (count < 0) return false;
    _inputEnd += static_cast<std::size_t>(count);
    return true;
}

// False: given up.
bool nxInputStream::_WaitForBytes()
{
    constexpr int interval = 50;  // milliseconds
    pollfd file{_file, POLLIN, 0};
    // An error of poll is left to the read, which tells it better.
    for (int ready = 0; ready == 0 || (ready < 0 && errno == EINTR);) {
        if (_givesUp && _givesUp()) {
            _failure = "interrupted";
            return false;
        }
        ready = poll(&file, 1, interval);
    }
    return true;
}

long long nxInputStream::_ReadFile(char* to, std::size_t size)
{
    if (_mayHaveToWait && !_WaitForBytes()) return -1;
    ssize_t count = 0;
    do
        count = read(_file, to, size);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        _failure = "cannot read: " + GetSystemText(errno);
    else if (count == 0)
        _inputOver = true;
    else
        _bytesRead += static_cast<unsigned long long>(count);
    return count;
}
