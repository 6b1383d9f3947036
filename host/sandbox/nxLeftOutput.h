#pragma once

#include <string>

#include "host/report/nxOutputBuffer.h"

// Finishes the files of a process that was killed, from the buffer that it shared. What the buffer tells is
// checked, not believed. Static functions only.
class nxLeftOutput
{
public:
    // Writes what the process had not written. begin: where the file's first byte of it lies, below 0 where
    // that cannot be known, as of a pipe.
    static void Write(int file, long long begin, const nxOutputBuffer& buffer);
    // The same of a record, which gets a last line that tells why it ends: see docs/run-record.md.
    static void FinishRecord(int file, long long begin, const nxOutputBuffer& buffer, const std::string& why);
};
