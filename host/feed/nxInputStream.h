#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/feed/nxDecoder.h"

// The bytes of one input, front to back: a plain file or one packed as nxDecoder knows. Which one it is, its
// first bytes tell, not its name; several compressed parts in a row read as one. "-" is standard input. The
// file is read through a buffer of fixed size and never mapped, so resident memory stays flat whatever its
// length. Owned by one reader and used by one thread at a time. Nothing here throws.
class nxInputStream
{
public:
    // `givesUp` is asked while a pipe has nothing to read, several times a second, on the thread that reads;
    // true ends the waiting as a failure, "interrupted".
    explicit nxInputStream(std::function<bool()> givesUp = {});
    ~nxInputStream();
    nxInputStream(const nxInputStream&) = delete;
    nxInputStream& operator=(const nxInputStream&) = delete;

    // `content` is what the file should be, for the message about a folder. False: GetFailure() tells why.
    [[nodiscard]] bool Open(const std::string& path, const char* content = "file of recorded data");

    // Opened and read once, to the end, so that a pipe serves as well as a file. Null, or why not.
    [[nodiscard]] static std::optional<std::string> ReadWhole(const std::string& path, const char* content,
                                                              std::string& text);

    // The count of bytes put at `to`, at most `size`; 0 at the end; -1 on a failure, also when compressed
    // data stops before its end. What came before the failure has been handed out by then.
    [[nodiscard]] long long Read(char* to, std::size_t size);

    // Known once it is open.
    [[nodiscard]] bool IsPacked() const { return _decoder != nullptr; }
    // Of the file within an archive, once something of it was read; else empty.
    [[nodiscard]] std::string GetEntryName() const
    {
        return _decoder ? _decoder->GetEntryName() : std::string();
    }
    [[nodiscard]] const std::string& GetFailure() const { return _failure; }
    // The failure is that compressed data stop before their end.
    [[nodiscard]] bool IsCut() const { return _isCut; }

    // Bytes of the file as it lies on the disk, for a percentage. The total is 0 when it is unknown (a pipe).
    [[nodiscard]] unsigned long long GetBytesConsumed() const
    {
        return _bytesRead - (_inputEnd - _inputBegin);
    }
    [[nodiscard]] unsigned long long GetBytesTotal() const { return _bytesTotal; }

private:
    bool _FillInput();
    long long _ReadFile(char* to, std::size_t size);
    bool _WaitForBytes();

    std::function<bool()> _givesUp;
    bool _mayHaveToWait = false;
    int _file = -1;
    std::vector<char> _input;  // bytes as they lie on the disk, between _inputBegin and _inputEnd
    std::size_t _inputBegin = 0;
    std::size_t _inputEnd = 0;
    bool _inputOver = false;
    std::unique_ptr<nxDecoder> _decoder;  // none: plain
    unsigned long long _bytesRead = 0;
    unsigned long long _bytesTotal = 0;
    std::string _failure;
    bool _isCut = false;
};
