#pragma once

#include <span>
#include <string_view>

#include "host/feed/nxFeedFormat.h"
#include "host/feed/nxTimeText.h"

// How a publisher writes its files: what their own rows do not tell. One row of a table; a new layout is one
// more. Constants of the program; any thread may read them.
struct nxFeedLayout
{
    enum class Stamp : unsigned char { Unknown, Start, End };  // of a bar's time
    // Which part of the file's name, cut at `mark`, is the product: "ADABTC-1m-2021-11-27" is cut at '-'.
    struct NamePart
    {
        char mark = '\0';  // the whole name
        unsigned int index = 0;
    };

    std::string_view name;   // of --layout
    std::string_view title;  // what it is, for a person
    nxFeedKind kind;
    // The columns by their names, separated by commas; "-" is one that does not count. A name that
    // nxFileColumns does not know is told by "NAME=COLUMN".
    std::string_view columns;
    // Files have no header row, or some of them: the columns are known by their places. Otherwise by their
    // names, and a file with all these names has this layout unless another one is asked for.
    bool isByPlace = false;
    bool isAsked = false;  // only --layout tells it: its names are everybody's
    char separator = ',';
    NamePart product = {};
    Stamp stamp = Stamp::Unknown;
    std::string_view zone = {};                               // UTC
    std::string_view scale = {};                              // prices are whole numbers of it
    nxTimeText::DayUnit dayUnit = nxTimeText::DayUnit::None;  // the file's name tells the day
    bool isZeroNone = false;                                  // a price of 0 is none
    std::string_view keep = {};   // rows whose keep column holds one of these, separated by |
    std::string_view trade = {};  // only where the trade column holds this, price and size are a trade

    [[nodiscard]] static std::span<const nxFeedLayout> GetAll();
    // Null: there is none of that name.
    [[nodiscard]] static const nxFeedLayout* Find(std::string_view name);
};
