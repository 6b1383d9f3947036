#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/feed/nxFeedFormat.h"

// What the columns of a file that others write stand for. A part is what our own formats call the column:
// "time", "product", "side", "open", "high", "low", "close", "volume", "bid", "bidVolume", "ask",
// "askVolume", "last"; or one that only such files have: "date" and "timeOfDay" (of a time in two columns),
// "maker" (the side of who was traded with), "snapshot" (the book begins anew), "keep" and "trade" (see
// nxFeedLayout). Empty: the column does not count.
class nxFileColumns
{
public:
    // The parts of a file's columns by their names, whatever their capitals, blanks and signs. `given` are
    // parts told by NAME=PART, separated by commas, which go before; "-" is no part. areParts: a name may
    // itself be that of a part.
    [[nodiscard]] static std::vector<std::string> GetParts(const std::vector<std::string>& names,
                                                           std::string_view given = {},
                                                           bool areParts = false);
    // How many of the names in `given` the file has; 0 unless it has all.
    [[nodiscard]] static std::size_t CountGiven(const std::vector<std::string>& names,
                                                std::string_view given);
    // None: they are those of no kind.
    [[nodiscard]] static std::optional<nxFeedKind> TellKind(const std::vector<std::string>& parts,
                                                            std::string_view side);
    // The parser's column of a part in a file of that kind.
    [[nodiscard]] static nxFeedColumn Get(std::string_view part, nxFeedKind kind);

    // The cells of a line without their quotes and the blanks around them.
    [[nodiscard]] static std::vector<std::string> Split(std::string_view line, char separator);
};
