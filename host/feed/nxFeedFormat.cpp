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

}  // namespace

const nxFeedFormat& nxFeedFormat::Get(nxFeedKind kind)
{
    return Formats[static_cast<std::size_t>(kind)];
}

const nxFeedFormat* nxFeedFormat::Tell(const std::vector<std::string>& names,
                                       std::vector<nxFeedColumn>& columns)
{
    const auto isOf = [&names](const nxFeedFormat& format) {
        const auto isNamed = [&names](std::string_view name) { return std::ranges::count(names, name) == 1; };
        return std::ranges::all_of(
                   names,
                   [&](const std::string& name) { return isNamed(name) && Find(format, name) != nullptr; }) &&
               std::ranges::all_of(format.columns, [&](const nxFeedColumn& column) {
                   return !column.required || isNamed(column.name);
               });
    };
    const auto format = std::ranges::find_if(Formats, isOf);
    if (format == Formats.end()) return nullptr;
    columns.clear();
    for (const std::string& name : names)
        columns.push_back(*Find(*format, name));
    return &*format;
}

std::string nxFeedFormat::GetHeader() const
{
    std::string header;
    for (const nxFeedColumn& column : columns)
        header.append(header.empty() ? "" : ",").append(column.name);
    return header;
}
