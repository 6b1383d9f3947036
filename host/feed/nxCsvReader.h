#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxCsvRow.h"
#include "host/feed/nxFeedError.h"
#include "host/feed/nxInputStream.h"

/** The rows of one file of recorded data, front to back, through a buffer of fixed size that always holds
   whole lines. The header row tells the columns. A byte order mark, CRLF, blank lines and a last line without
   its end are taken as they come; product names may stand in quotes. Reading a row allocates nothing once the
   buffer stands. Owned by one nxFeedReader and used by one thread. Nothing here throws but for want of
   memory. */
class nxCsvReader
{
public:
    enum class Result {
        Row,
        End,
        Bad,    // this row cannot be read; the next call goes on behind it
        Failed  // the stream broke; there is nothing behind it
    };

    explicit nxCsvReader(std::string path);

    /** Opens the file and reads the header row. False: GetError() tells why. */
    [[nodiscard]] bool Open();

    [[nodiscard]] Result Next(nxCsvRow& row);

    /** Looking ahead: from Mark() to Rewind() rows come out of what the buffer holds already, and Next()
       answers End behind them; after Rewind() the same rows come again. Nothing is read from the file in
       between. */
    void Mark();
    void Rewind();

    [[nodiscard]] const nxFeedFormat& GetFormat() const { return *_format; }
    [[nodiscard]] const nxFeedError& GetError() const { return _error; }

    /** An error about the row read last: the place is that of the cell in the column of that name, or of the
       row if it has no such column. */
    [[nodiscard]] nxFeedError MakeError(std::string_view column, const std::string& reason) const;

    [[nodiscard]] const nxInputStream& GetStream() const { return _stream; }

    static constexpr std::size_t BufferSize = 256 * 1024;  // the longest row, too

private:
    bool _Fill();
    bool _ReadHeader();
    Result _ReadRow(nxCsvRow& row);
    const char* _ReadTime(const char* cell, nxCsvRow& row, std::string& reason) const;
    const char* _ReadProduct(const char* cell, nxCsvRow& row);
    Result _Refuse(const char* cell, const std::string& reason);
    std::string _GetCountReason(std::size_t cells) const;

    std::string _path;
    nxInputStream _stream;
    const nxFeedFormat* _format = nullptr;
    std::vector<nxFeedColumn> _columns;  // in the order of the file
    /** Bytes behind _linesEnd are the beginning of a line whose rest is still to come; a few bytes beyond the
       size let the number reader look at eight bytes at a time. */
    std::unique_ptr<char[]> _buffer;
    const char* _cursor = nullptr;
    const char* _linesEnd = nullptr;
    const char* _filledEnd = nullptr;
    const char* _rowBegin = nullptr;  // of the row read last
    const char* _mark = nullptr;      // while looking ahead
    unsigned long long _line = 0;
    unsigned long long _markLine = 0;
    bool _isStreamOver = false;
    bool _hasFailed = false;
    std::string _product;  // of the row before
    std::string _unquoted;
    nxFeedError _error;
};
