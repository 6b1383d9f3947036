#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxCsvBlock.h"
#include "host/feed/nxFileForm.h"

// Makes rows of the lines of one file, block after block. The header row tells the columns, or else
// nxFileForm finds them out. A byte order mark, CRLF and blank lines are taken as they come; product names
// may stand in quotes. A file in none of our own formats is read with more patience: blanks and quotes around
// any cell, comment lines, signs of currencies and of thousands, further columns. Owned by one
// nxCsvReader. ReadHeader and Parse are called by one thread at a time; after the header any thread may call
// the rest. Nothing here throws but for want of memory.
class nxCsvParser
{
public:
    nxCsvParser(std::string path, nxFileFormOptions options)
        : _path(std::move(path)), _options(std::move(options))
    {
    }

    // Takes the header row off the front of the block's lines; where the block ends before it, HasHeader()
    // is false still and the next block goes on. False: it is none, as the block's error tells.
    [[nodiscard]] bool ReadHeader(nxCsvBlock& block, const std::string& entryName);
    [[nodiscard]] bool HasHeader() const { return _form.format != nullptr; }
    [[nodiscard]] const nxFileForm& GetForm() const { return _form; }
    // The lines that follow come last line first, and this many come.
    void CountDown(unsigned long long lines)
    {
        _line += lines + 1;
        _step = ~0ull;
    }

    // The rows of the block's next lines, each of which has its end: of all, or until there are `most`.
    void Parse(nxCsvBlock& block, std::size_t most = ~std::size_t{});

    // Lines so far, those of the block parsed last among them.
    [[nodiscard]] unsigned long long GetLineCount() const { return _line; }

    // An error about a row: the place is that of the cell in the column of that name, or of the row if it
    // has no such column.
    [[nodiscard]] nxFeedError MakeError(const nxCsvRow& row, std::string_view column,
                                        const std::string& reason) const;

private:
    // The cells of a row that make up its time, and what makes it count.
    struct RowMarks
    {
        std::string_view date, timeOfDay;
        bool isKept = true;
        bool isTrade = true;
        bool hasPrice = false;
    };

    const char* _ReadUsualRow(const nxCsvBlock& block, nxCsvRow& row) const;
    const char* _ReadRow(nxCsvBlock& block, nxCsvRow& row);
    bool _IsOfBefore(const nxCsvBlock& block, const char* cell) const;
    const char* _ReadTime(const char* cell, nxCsvRow& row, std::string& reason) const;
    const char* _ReadProduct(nxCsvBlock& block, const char* cell, nxCsvRow& row);
    const char* _ReadForeignRow(nxCsvBlock& block, nxCsvRow& row);
    const char* _ReadForeignCell(const nxFeedColumn& column, const char* cell, nxCsvRow& row, RowMarks& marks,
                                 std::string& reason);
    void _TakeProduct(std::string_view cell, nxCsvRow& row);
    void _FinishForeignRow(nxCsvBlock& block, nxCsvRow& row, const RowMarks& marks);
    const char* _Refuse(nxCsvBlock& block, nxCsvRow& row, const char* cell, const std::string& reason);
    std::string _GetCountReason(const nxCsvBlock& block, const nxCsvRow& row, std::size_t cells) const;

    std::string _path;
    nxFileFormOptions _options;
    nxFileForm _form;
    // Of one of our own formats with all its columns as it lists them, which is also the order of their
    // slots; 0: it is another.
    std::ptrdiff_t _usualNumbers = 0;
    unsigned long long _line = 0;
    unsigned long long _step = 1;  // or one back, modulo 2^64
    std::string_view _before;      // product of the row before, in the same block
};
