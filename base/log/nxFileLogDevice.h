#pragma once

#include <cstddef>
#include <string>

#include "base/log/nxAsyncLogDevice.h"

// Writes the log to a file, appending. A file that would grow beyond its size is renamed with a number
// (log.txt to log.1.txt, and so on up to the count of files kept) and begun anew.
class nxFileLogDevice : public nxAsyncLogDevice
{
public:
    // Lines are dropped until this has succeeded. `maxFileSize` in bytes; nxError_LogFileFailed when the
    // file cannot be opened.
    [[nodiscard]] nxErrorEnum Open(const std::string& path, std::size_t maxFileSize = 64u << 20,
                                   std::size_t filesKept = 5);
};
