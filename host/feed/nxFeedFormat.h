#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

// What a file of recorded data holds.
enum class nxFeedKind : unsigned char {
    Quote,  // best prices and trades
    Depth,  // changes of the levels of a book
    Bar
};

// How the text of a column is read.
enum class nxFeedColumnType : unsigned char {
    Time,
    Product,
    Side,    // BUY, SELL or empty
    Number,  // a decimal number or empty
    // Of files that others write; see nxFileColumns.
    Date,
    TimeOfDay,
    MakerSide,
    Snapshot,
    Keep,
    TradeMark,
    Skip
};

struct nxFeedColumn
{
    std::string_view name;
    nxFeedColumnType type;
    unsigned int slot = 0;  // a Number's place in nxCsvRow::numbers
    bool isSize = false;    // a Number: counted in lots; else a price
    bool required = true;   // a quotes file may leave out what it never gives
};

// One of the three forms of recorded data: its name for messages and its columns, which a file may hold in
// any order. The formats are constants of the program; any thread may read them.
struct nxFeedFormat
{
    nxFeedKind kind;
    std::string_view name;
    std::span<const nxFeedColumn> columns;

    [[nodiscard]] static const nxFeedFormat& Get(nxFeedKind kind);

    // The format that a header row's names belong to, with `columns` in the order of the file. Null: none,
    // since one is not known, stands there twice or is missing.
    [[nodiscard]] static const nxFeedFormat* Tell(const std::vector<std::string>& names,
                                                  std::vector<nxFeedColumn>& columns);

    // The header row: the names, separated by commas.
    [[nodiscard]] std::string GetHeader() const;
};

// Slots of nxCsvRow::numbers by format.
namespace nxFeedSlot {
inline constexpr unsigned int Bid = 0, BidVolume = 1, Ask = 2, AskVolume = 3, Last = 4, LastVolume = 5;
inline constexpr unsigned int Price = 0, LevelVolume = 1;
inline constexpr unsigned int Open = 0, High = 1, Low = 2, Close = 3, BarVolume = 4;
inline constexpr unsigned int Count = 6;
}  // namespace nxFeedSlot
