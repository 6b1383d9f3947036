#pragma once

#include <mutex>
#include <ostream>
#include <streambuf>

#include "host/report/nxOutputFile.h"

// Standard output through a buffer that another process shares, for as long as the object lives. Any thread.
class nxSharedOutput : private std::streambuf
{
public:
    // The buffer is all 0 and outlives the object.
    explicit nxSharedOutput(nxOutputBuffer& buffer);

    std::ostream& GetStream() { return _stream; }

private:
    bool _Write(const char* bytes, std::size_t size);
    std::streamsize xsputn(const char* bytes, std::streamsize size) override;
    int_type overflow(int_type character) override;
    int sync() override;

    std::mutex _mutex;
    nxOutputFile _file{"standard output"};
    const bool _isTerminal;
    std::ostream _stream{this};
};
