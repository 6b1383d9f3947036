#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>

#include "host/feed/nxCsvParser.h"
#include "host/feed/nxInputStream.h"
#include "host/feed/nxReadAhead.h"

// The rows of one file of recorded data, front to back. What does not fit the first block is read and parsed
// ahead by a thread of the reader, and unpacked by another one, a few blocks of fixed size far, so that
// memory stays flat; or, where that is not wanted, in its turn. Owned by one nxFeedReader and used by one
// thread. Nothing here throws but for want of memory, which ends the process when it strikes the reader's own
// thread.
class nxCsvReader
{
public:
    enum class Result {
        Row,
        End,
        Bad,    // this row cannot be read; the next call goes on behind it
        Failed  // the stream broke; there is nothing behind it
    };

    // `interrupted`, if there is one, outlives the reader; once it is true, waiting for the next bytes of a
    // pipe ends in a failure.
    explicit nxCsvReader(std::string path, const std::atomic<bool>* interrupted = nullptr,
                         nxFileFormOptions options = {}, bool readsAhead = true);
    ~nxCsvReader();
    nxCsvReader(const nxCsvReader&) = delete;
    nxCsvReader& operator=(const nxCsvReader&) = delete;

    static constexpr std::size_t FirstRows = 4096;

    // Opens the file, reads the header row and the first rows: FirstRows, or as many as fit the first block.
    // False: GetError() tells why.
    [[nodiscard]] bool Open();
    // Where the rows are taken by a thread that is ahead of all else, a file in one of our own formats needs
    // none to be parsed: to hand its rows over costs as much. To be called before the first Next().
    void ParseInTurnIfEasy()
    {
        if (!_readsAhead || GetForm().isForeign) return;
        _readsAhead = false;
        _unpacksAhead = true;
    }

    // Those rows, bad ones among them. To be asked before the first Next().
    [[nodiscard]] std::span<const nxCsvRow> GetFirstRows() const
    {
        return {_current->rows.data(), _current->count};
    }

    [[nodiscard]] Result Next();
    // The row that Next() answered last; good until the next call.
    [[nodiscard]] const nxCsvRow& GetRow() const { return *_row; }

    [[nodiscard]] const nxFileForm& GetForm() const { return _parser.GetForm(); }
    [[nodiscard]] const nxFeedFormat& GetFormat() const { return *GetForm().format; }
    // Rows so far that the file's layout does not keep, or that give no price at all.
    [[nodiscard]] unsigned long long GetSkippedCount() const { return _skipped + _current->skipped; }
    // Why Next() answered Bad or Failed, or why Open() failed.
    [[nodiscard]] const nxFeedError& GetError() const { return *_error; }

    // An error about the row read last: the place is that of the cell in the column of that name, or of the
    // row if it has no such column.
    [[nodiscard]] nxFeedError MakeError(std::string_view column, const std::string& reason) const
    {
        return _parser.MakeError(*_row, column, reason);
    }

    // Bytes of the file as it lies on the disk, up to the rows that are taken from now, and in all; the
    // latter is 0 when it is unknown (a pipe).
    [[nodiscard]] unsigned long long GetBytesConsumed() const { return _current->bytesConsumed; }
    [[nodiscard]] unsigned long long GetBytesTotal() const { return _stream.GetBytesTotal(); }

    // At the end: the last line had no end, so it may have been cut.
    [[nodiscard]] bool HasOpenEnd() const { return _current->hasOpenEnd; }

private:
    void _Fill(nxCsvBlock& block, std::size_t least);
    void _ReadAhead();
    Result _NextRows();
    void _FillNext();
    void _Unpack();
    void _WaitForNext(std::size_t next);
    bool _TurnAround();
    long long _ReadText(char* to, std::size_t size);
    const std::string& _GetFailure() const;

    std::string _path;
    bool _readsAhead;
    nxInputStream _stream;
    bool _unpacksAhead = false;            // where it is parsed in turn
    std::optional<nxReadAhead> _unpacked;  // of a packed file, from the second block on
    nxCsvParser _parser;
    std::string _rest;  // the beginning of a line whose end is still to come
    bool _isStreamOver = false;
    std::optional<std::string> _turned;  // of a file whose newest rows come first: its lines, the last first
    std::size_t _turnedPosition = 0;
    unsigned long long _skipped = 0;  // in the blocks before the current one

    static constexpr std::size_t BlockCount = 4;
    std::array<nxCsvBlock, BlockCount> _blocks;  // a ring; without the thread only the first
    nxCsvBlock* _current = &_blocks[0];          // the one that rows are taken of
    std::size_t _position = 0;                   // of the next row
    std::size_t _refusal = 0;                    // of the next bad row
    const nxCsvRow* _row = nullptr;
    const nxFeedError* _error = nullptr;

    std::thread _thread;
    std::atomic<bool> _isLeaving = false;
    std::exception_ptr _thrown;  // on it, such as for lack of memory; told by the block that fails
    std::mutex _mutex;           // guards the two counts
    std::condition_variable _changed;
    std::size_t _filled = 1;  // blocks ever filled and ever given back, each at its count in the ring
    std::size_t _freed = 0;
};
