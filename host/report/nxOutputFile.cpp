#include "host/report/nxOutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr mode_t AsTheUserWants = 0666;  // less what umask takes away

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
    if (!_failure && (_isBorrowed || _cut == Cut::AtWrite))
        Flush();
    else
        _CutOff();
    if (!_isBorrowed) close(_file);
    _buffer->isOpen = false;
}

std::optional<std::string> nxOutputFile::Open(const std::string& path, nxOutputBuffer* buffer)
{
    _path = path;
    _file = path == "-" ? TakeStandardOutput()
                        : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, AsTheUserWants);
    if (_file < 0) {
        _Fail();
        return _failure;
    }
    if (buffer == nullptr) _own = std::make_unique<nxOutputBuffer>();
    _buffer = buffer == nullptr ? _own.get() : buffer;
    _buffer->isOpen = true;
    return std::nullopt;
}

void nxOutputFile::OpenDescriptor(int descriptor, nxOutputBuffer& buffer)
{
    _file = descriptor;
    _isBorrowed = true;
    _buffer = &buffer;
    _buffer->isOpen = true;
}

void nxOutputFile::Write(std::string_view text)
{
    if (text.size() > nxOutputBuffer::Size - _buffer->used.load(std::memory_order_relaxed)) Flush();
    if (_failure) return;
    if (text.size() > nxOutputBuffer::Size) {
        _WriteOut(text.data(), text.size());
    } else {
        const unsigned int used = _buffer->used.load(std::memory_order_relaxed);
        std::memcpy(_buffer->bytes + used, text.data(), text.size());
        _buffer->used.store(used + static_cast<unsigned int>(text.size()), std::memory_order_release);
    }
    _buffer->pieces.store(_buffer->pieces.load(std::memory_order_relaxed) + 1, std::memory_order_release);
}

void nxOutputFile::Flush()
{
    if (const unsigned int used = _buffer->used.load(std::memory_order_relaxed); used != 0)
        _WriteOut(_buffer->bytes, used);
}

// Of whole calls of Write.
void nxOutputFile::_WriteOut(const char* bytes, std::size_t size)
{
    std::size_t left = size;
    _buffer->isWriting = true;
    while (left != 0 && !_failure) {
        const ssize_t count = write(_file, bytes, left);
        if (count >= 0) {
            bytes += count;
            left -= static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            _Fail();
        }
    }
    if (!_failure) _size += size;
    // In this order: who finds neither done sees by the length of the file that the bytes are there.
    _buffer->used = 0;
    _buffer->written += size - left;
    _buffer->isWriting = false;
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
    if (_file < 0 || _isBorrowed || _path == "-") return;
    // Of a pipe or a device it cannot be, and then nobody takes a part for the whole.
    static_cast<void>(ftruncate(_file, _cut == Cut::Empty ? 0 : static_cast<off_t>(_size)) == 0);
}

std::optional<std::string> nxOutputFile::Close()
{
    if (!IsOpen()) return _failure;
    Flush();
    // The number is free whatever comes of it; a disk that is written later may tell only now.
    if (_isBorrowed)
        _file = -1;
    else if (close(std::exchange(_file, -1)) != 0)
        _Fail();
    _buffer->isOpen = false;
    return _failure;
}
