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
    if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) return -1;
    return output;
}

}  // namespace

std::optional<std::string> nxOutputFile::Open(const std::string& path, nxOutputBuffer* buffer)
{
    _path = path;
    _file = path == "-" ? TakeStandardOutput()
                        : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, AsTheUserWants);
    if (_file < 0) {
        _NoteFailure();
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

void nxOutputFile::_WriteOut(const char* bytes, std::size_t size)
{
    const std::size_t whole = size;
    _buffer->isWriting = true;
    while (size != 0) {
        const ssize_t count = write(_file, bytes, size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            _NoteFailure();
            break;
        }
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    // In this order: who finds neither done sees by the length of the file that the bytes are there.
    _buffer->used = 0;
    _buffer->written += whole - size;
    _buffer->isWriting = false;
}

void nxOutputFile::_NoteFailure()
{
    if (!_failure) _failure = _path + ": " + _what + " cannot be written: " + std::strerror(errno);
}

std::optional<std::string> nxOutputFile::Close()
{
    if (!IsOpen()) return _failure;
    Flush();
    if (const int file = std::exchange(_file, -1); !_isBorrowed && close(file) != 0) _NoteFailure();
    _buffer->isOpen = false;
    return _failure;
}
