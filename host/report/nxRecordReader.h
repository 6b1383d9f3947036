#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/results/nxResultRun.h"

// Reads the record of a run back into the result that the run had: the document of a whole record is that of
// the run itself, to the byte. A record that was cut, or is of version 1, gives what stands in it, and the
// result says what is missing. One pass; memory grows as the run's own does, with orders, round trips and
// days. Used on one thread.
class nxRecordReader
{
public:
    nxRecordReader();
    ~nxRecordReader();

    // A file, plain or packed, or a pipe; "-" is standard input. Null, or why it cannot be read:
    // "FILE:LINE: what is wrong". Once.
    [[nodiscard]] std::optional<std::string> Read(const std::string& path);
    nxResult& GetResult() { return _result; }

private:
    class Reading;

    nxResult _result;
    std::unique_ptr<Reading> _reading;
};
