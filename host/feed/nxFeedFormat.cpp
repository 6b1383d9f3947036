#include "host/feed/nxFeedFormat.h"

#include <algorithm>
#include <array>

namespace {

using enum nxFeedColumnType;

constexpr std::array QuoteColumns{
    nxFeedColumn{"time", Time},
    nxFeedColumn{"product", Product},
    nxFeedColumn{"bid", Number, nxFeedSlot::Bid, false, false},
    nxFeedColumn{"bidVolume", Number, nxFeedSlot::BidVolume, true, false},
    nxFeedColumn{"ask", Number, nxFeedSlot::Ask, false, false},
    nxFeedColumn{"askVolume", Number, nxFeedSlot::AskVolume, true, false},
    nxFeedColumn{"last", Number, nxFeedSlot::Last, false, false},
    nxFeedColumn{"lastVolume", Number, nxFeedSlot::LastVolume, true, false},
    nxFeedColumn{"side", Side, 0, false, false},
};
constexpr std::array DepthColumns{
    nxFeedColumn{"time", Time},
    nxFeedColumn{"product", Product},
    nxFeedColumn{"side", Side},
    nxFeedColumn{"price", Number, nxFeedSlot::Price},
    nxFeedColumn{"volume", Number, nxFeedSlot::LevelVolume, true},
};
constexpr std::array BarColumns{
    nxFeedColumn{"time", Time},
    nxFeedColumn{"product", Product},
    nxFeedColumn{"open", Number, nxFeedSlot::Open},
    nxFeedColumn{"high", Number, nxFeedSlot::High},
    nxFeedColumn{"low", Number, nxFeedSlot::Low},
    nxFeedColumn{"close", Number, nxFeedSlot::Close},
    nxFeedColumn{"volume", Number, nxFeedSlot::BarVolume, true},
};

constexpr std::array Formats{
    nxFeedFormat{nxFeedKind::Quote, "quotes", QuoteColumns},
    nxFeedFormat{nxFeedKind::Depth, "depth", DepthColumns},
    nxFeedFormat{nxFeedKind::Bar, "bars", BarColumns},
};

const nxFeedColumn* Find(const nxFeedFormat& format, std::string_view name)
{
    const auto found = std::ranges::find(format.columns, name, &nxFeedColumn::name);
    return found == format.columns.end() ? nullptr : &*found;
}

// How many of the names belong to the format, less the required ones that are missing: so "time,product,side"
// with a price and no volume is depth with a column missing, not quotes with one too many.
long GetLikeness(const nxFeedFormat& format, const std::vector<std::string>& names)
{
    const auto known =
        std::ranges::count_if(names, [&](const std::string& name) { return Find(format, name) != nullptr; });
    const auto missing = std::ranges::count_if(format.columns, [&](const nxFeedColumn& column) {
        return column.required && std::ranges::find(names, column.name) == names.end();
    });
    return known == 0 ? 0 : 100 * known - missing;
}

}  // namespace

const nxFeedFormat& nxFeedFormat::Get(nxFeedKind kind)
{
    return Formats[static_cast<std::size_t>(kind)];
}

const nxFeedFormat* nxFeedFormat::Tell(const std::vector<std::string>& names,
                                       std::vector<nxFeedColumn>& columns, std::string& reason,
                                       std::size_t& wrong)
{
    const auto& format = *std::ranges::max_element(
        Formats, {}, [&](const nxFeedFormat& candidate) { return GetLikeness(candidate, names); });
    wrong = 0;
    if (GetLikeness(format, names) == 0) {
        reason = "no header row; known are";
        for (const nxFeedFormat& known : Formats)
            reason += (known.kind == nxFeedKind::Quote ? " " : " | ") + known.GetHeader();
        return nullptr;
    }
    const std::string known = "; the columns of " + std::string(format.name) + " are " + format.GetHeader();
    columns.clear();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const nxFeedColumn* column = Find(format, names[i]);
        const bool twice = std::find(names.begin(), names.begin() + static_cast<long>(i), names[i]) !=
                           names.begin() + static_cast<long>(i);
        if (column == nullptr || twice) {
            reason = (twice ? "column given twice: \"" : "unknown column \"") + names[i] + "\"" + known;
            wrong = i;
            return nullptr;
        }
        columns.push_back(*column);
    }
    for (const nxFeedColumn& column : format.columns) {
        if (column.required && std::ranges::find(names, column.name) == names.end()) {
            reason = "missing column \"" + std::string(column.name) + "\"" + known;
            return nullptr;
        }
    }
    return &format;
}

std::string nxFeedFormat::GetHeader() const
{
    std::string header;
    for (const nxFeedColumn& column : columns)
        header.append(header.empty() ? "" : ",").append(column.name);
    return header;
}
