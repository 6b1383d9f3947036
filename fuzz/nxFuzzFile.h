#pragma once

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

// A file in memory with a path, for what reads and writes files. It goes with the object.
class nxFuzzFile
{
public:
    explicit nxFuzzFile(std::string_view content) : _file(memfd_create("fuzz", MFD_CLOEXEC))
    {
        if (_file < 0 || write(_file, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
            std::abort();
    }
    ~nxFuzzFile() { close(_file); }
    nxFuzzFile(const nxFuzzFile&) = delete;
    nxFuzzFile& operator=(const nxFuzzFile&) = delete;

    std::string GetPath() const { return "/proc/self/fd/" + std::to_string(_file); }
    std::string Read() const
    {
        struct stat status
        {
        };
        if (fstat(_file, &status) != 0) std::abort();
        std::string content(static_cast<std::size_t>(status.st_size), '\0');
        if (pread(_file, content.data(), content.size(), 0) != status.st_size) std::abort();
        return content;
    }

private:
    const int _file;
};
