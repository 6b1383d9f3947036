#include "host/report/nxOutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t BufferSize = 16 * 1024;

// What is printed from then on, by Lua's own print too, goes to standard error.
int TakeStandardOutput()
{
    std::fflush(stdout);
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    return output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0 ? -1 : output;
}

}  // namespace

// Not closed before: what went on has thrown.
nxOutputFile::~nxOutputFile()
{
    if (_file < 0) return;
    if (!_failure && _cut == Cut::AtWrite)
        _WriteBuffer();
    else
        _CutOff();
    close(_file);
}

std::optional<std::string> nxOutputFile::Open(const std::string& path)
{
    _path = path;
    _buffer.reserve(BufferSize);
    _file = path == "-" ? TakeStandardOutput()
                        : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (_file < 0) _Fail();
    return _failure;
}

void nxOutputFile::Write(std::string_view text)
{
    if (_buffer.size() + text.size() > BufferSize) _WriteBuffer();
    if (text.size() > BufferSize)
        _WriteNow(text);
    else if (!_failure)
        _buffer += text;
}

void nxOutputFile::_WriteBuffer()
{
    _WriteNow(_buffer);
    _buffer.clear();
}

void nxOutputFile::_WriteNow(std::string_view text)
{
    for (std::string_view rest = text; !_failure && !rest.empty();) {
        const ssize_t count = write(_file, rest.data(), rest.size());
        if (count >= 0)
            rest.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            _Fail();
    }
    if (!_failure) _size += text.size();
}

void nxOutputFile::_Fail()
{
    if (_failure) return;
    _failure = _path + ": " + _what + " cannot be written: " + std::strerror(errno);
    _CutOff();
}

void nxOutputFile::_CutOff()
{
    // Standard output may have held something before.
    if (_file < 0 || _path == "-") return;
    // Of a pipe or a device it cannot be, and then nobody takes a part for the whole.
    static_cast<void>(ftruncate(_file, _cut == Cut::Empty ? 0 : static_cast<off_t>(_size)) == 0);
}

std::optional<std::string> nxOutputFile::Close()
{
    if (_file < 0) return _failure;
    _WriteBuffer();
    // The number is free whatever comes of it; a disk that is written later may tell only now.
    if (close(std::exchange(_file, -1)) != 0) _Fail();
    return _failure;
}
