#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/values/nxDecimal.h"
#include "host/feed/nxFeedError.h"
#include "host/feed/nxFeedLayout.h"

// What a person tells of files that are in none of our own formats. What is empty, the file tells.
struct nxFileFormOptions
{
    const nxFeedLayout* layout = nullptr;
    std::string columns;   // names of the columns by their places, separated by commas
    std::string product;   // of files without a column of it
    nxDecimal priceScale;  // prices are whole numbers of it; invalid: none
    std::shared_ptr<const nxTimeZone> zone;
    std::optional<long long> day;  // since 1970, of times of day
    std::optional<bool> isDayFirst;

    bool operator==(const nxFileFormOptions&) const = default;
};

// How the rows of one file are to be read. Found out from its first lines. Then only the parser's.
struct nxFileForm
{
    const nxFeedFormat* format = nullptr;
    std::vector<nxFeedColumn> columns;  // in the order of the file; a foreign one up to the last that counts
    bool isForeign = false;             // not one of our own formats, and read with more patience
    char separator = ',';
    std::string product;  // of all rows; empty: a column tells
    nxTimeText time;
    nxDecimal scale;          // of prices; invalid: none
    bool isZeroNone = false;  // a price of 0 is none
    std::vector<std::string> keep;
    std::string trade;
    nxFeedLayout::Stamp stamp = nxFeedLayout::Stamp::Unknown;
    bool isNewestFirst = false;
    std::string layout;       // its name; empty where none fits
    std::string description;  // what of a foreign file was taken for what

    // Takes the header row of one of our own formats. False: it is none, and nothing is changed.
    [[nodiscard]] bool SetOwn(std::string_view header);

    // Of any other file: reads the header row, or finds out that there is none. `text` are the first lines,
    // whole, of the file at `path`; `begin` is where the rows begin and `line` the number of lines in front
    // of it. entryName: of the file within an archive. False: `error` tells why, and where in the lines.
    [[nodiscard]] bool Find(std::string_view text, const std::string& path, const std::string& entryName,
                            const nxFileFormOptions& options, std::size_t& begin, unsigned long long& line,
                            nxFeedError& error);
};
