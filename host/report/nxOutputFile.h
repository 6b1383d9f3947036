#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/report/nxOutputBuffer.h"

// A file that a run writes, opened before the run so that it is known to be possible, written through a
// buffer and whole once Close() has succeeded. The first failure is kept. Used on the run's thread.
class nxOutputFile
{
public:
    // what: "the record", for messages.
    explicit nxOutputFile(const char* what) : _what(what) {}
    ~nxOutputFile() { static_cast<void>(Close()); }
    nxOutputFile(const nxOutputFile&) = delete;
    nxOutputFile& operator=(const nxOutputFile&) = delete;

    // Empties a file that exists. "-" is standard output, which is this file's alone from then on: whatever
    // else the process prints to it goes to standard error. Null, or why not: "FILE: reason".
    //
    // What is written waits in the given buffer, which is all 0 and outlives the file; null: in one of its
    // own.
    [[nodiscard]] std::optional<std::string> Open(const std::string& path, nxOutputBuffer* buffer = nullptr);
    // The same with a descriptor that is open, and stays so.
    void OpenDescriptor(int descriptor, nxOutputBuffer& buffer);
    bool IsOpen() const { return _file >= 0; }
    void Write(std::string_view text);
    // Hands on what waits.
    void Flush();
    // What was written so far could not be, as far as is known.
    bool HasFailed() const { return _failure.has_value(); }
    // Null, or why the file is not whole: "FILE: reason".
    [[nodiscard]] std::optional<std::string> Close();

private:
    void _WriteOut(const char* bytes, std::size_t size);
    void _NoteFailure();

    const char* _what;
    std::string _path;
    int _file = -1;
    bool _isBorrowed = false;
    nxOutputBuffer* _buffer = nullptr;
    std::unique_ptr<nxOutputBuffer> _own;
    std::optional<std::string> _failure;
};
