#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxCsvBlock.h"

// Makes rows of the lines of one file, block after block. The header row tells the columns. A byte order
// mark, CRLF and blank lines are taken as they come; product names may stand in quotes. Owned by one
// nxCsvReader. ReadHeader and Parse are called by one thread at a time; after the header any thread may call
// the rest. Nothing here throws but for want of memory.
class nxCsvParser
{
public:
    explicit nxCsvParser(std::string path) : _path(std::move(path)) {}

    // Takes the header row off the front of the block's lines; where the block ends before it, HasHeader()
    // is false still and the next block goes on. False: it is none, as the block's error tells.
    [[nodiscard]] bool ReadHeader(nxCsvBlock& block);
    [[nodiscard]] bool HasHeader() const { return _format != nullptr; }
    [[nodiscard]] const nxFeedFormat& GetFormat() const { return *_format; }

    // The rows of the block's lines, each of which has its end.
    void Parse(nxCsvBlock& block);

    // Lines so far, those of the block parsed last among them.
    [[nodiscard]] unsigned long long GetLineCount() const { return _line; }

    // An error about a row: the place is that of the cell in the column of that name, or of the row if it
    // has no such column.
    [[nodiscard]] nxFeedError MakeError(const nxCsvRow& row, std::string_view column,
                                        const std::string& reason) const;

private:
    const char* _ReadRow(nxCsvBlock& block, nxCsvRow& row);
    const char* _ReadTime(const char* cell, nxCsvRow& row, std::string& reason) const;
    const char* _ReadProduct(nxCsvBlock& block, const char* cell, nxCsvRow& row);
    const char* _Refuse(nxCsvBlock& block, nxCsvRow& row, const char* cell, const std::string& reason);
    std::string _GetCountReason(const nxCsvBlock& block, const nxCsvRow& row, std::size_t cells) const;

    std::string _path;
    const nxFeedFormat* _format = nullptr;
    std::vector<nxFeedColumn> _columns;  // in the order of the file
    unsigned long long _line = 0;
    std::string_view _before;  // product of the row before, in the same block
};
