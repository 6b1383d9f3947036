#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/report/nxOutputBuffer.h"

// A file that a run writes, opened before the run so that it is known to be possible, written through a
// buffer and whole once Close() has succeeded. The first failure is kept, and nothing is written after it.
// Used on the run's thread.
class nxOutputFile
{
public:
    // What a file holds that could not be written to its end.
    enum class Cut {
        Empty,   // nothing, where it can be emptied: a part could be taken for the whole
        AtWrite  // what whole calls of Write gave, also when the process is killed
    };

    // what: "the record", for messages.
    explicit nxOutputFile(const char* what, Cut cut = Cut::Empty) : _what(what), _cut(cut) {}
    ~nxOutputFile();
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
    void _Fail();
    void _CutOff();

    const char* _what;
    const Cut _cut;
    std::string _path;
    int _file = -1;
    bool _isBorrowed = false;
    nxOutputBuffer* _buffer = nullptr;
    std::unique_ptr<nxOutputBuffer> _own;
    std::size_t _size = 0;  // of what whole calls have written
    std::optional<std::string> _failure;
};
