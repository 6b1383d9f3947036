#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxFeedError.h"

// A small CSV file of named columns, read whole: plain, .gz or .zst, a pipe as well, under the same rules for
// text as recorded data. The columns may come in any order. Cells may stand in double quotes, two of which
// are one inside. Used by one thread.
class nxCsvTable
{
public:
    struct Column
    {
        std::string_view name;  // outlives the table
        bool isRequired = true;
    };
    explicit nxCsvTable(std::vector<Column> columns) : _columns(std::move(columns)) {}

    // Opened and read once. takeRow looks at each row by Get, and answers what Refuse does where it refuses
    // one. `content` is what the file should be, for the message about a folder. False: GetError() tells why
    // and where.
    [[nodiscard]] bool Read(const std::string& path, const char* content,
                            const std::function<bool()>& takeRow);

    // Of the row that is taken; empty in a column that the file has not.
    const std::string& Get(std::size_t column) const { return _row[column].text; }
    // False, with that error at the cell.
    bool Refuse(std::size_t column, const std::string& reason) { return _Refuse(_row[column].place, reason); }
    // Where the cell stands.
    nxFeedError GetPlace(std::size_t column) const
    {
        return {_error.file, _error.line, _row[column].place, {}};
    }
    const nxFeedError& GetError() const { return _error; }

private:
    struct Cell
    {
        std::string text;
        unsigned int place = 0;  // 1-based, in the line
    };

    bool _SplitRow(std::string_view line);
    bool _ReadHeader();
    bool _ReadRow();
    bool _Refuse(unsigned int place, const std::string& reason);
    std::string _GetKnown() const;

    const std::vector<Column> _columns;
    std::vector<std::size_t> _order;  // the columns as the file has them
    std::vector<Cell> _cells;         // of the line, as the file has them
    std::vector<Cell> _row;           // by column
    nxFeedError _error;               // file and line are those of the row that is read
};
