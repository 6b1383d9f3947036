#include "host/report/nxOutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

// What is printed from then on, by Lua's own print too, goes to standard error.
std::FILE* TakeStandardOutput()
{
    std::fflush(stdout);
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) return nullptr;
    return fdopen(output, "wb");
}

}  // namespace

std::optional<std::string> nxOutputFile::Open(const std::string& path)
{
    _path = path;
    _file.reset(path == "-" ? TakeStandardOutput() : std::fopen(path.c_str(), "wb"));
    if (_file == nullptr) _NoteFailure();
    return _failure;
}

void nxOutputFile::Write(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), _file.get()) != text.size()) _NoteFailure();
}

void nxOutputFile::_NoteFailure()
{
    if (!_failure) _failure = _path + ": " + _what + " cannot be written: " + std::strerror(errno);
}

std::optional<std::string> nxOutputFile::Close()
{
    if (_file != nullptr && std::fclose(_file.release()) != 0) _NoteFailure();
    return _failure;
}
