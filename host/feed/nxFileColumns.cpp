#include "host/feed/nxFileColumns.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <ranges>

namespace {

// A part and the names that it goes by, folded; of two that a file has, the one in front counts.
struct Names
{
    std::string_view part;
    std::string_view names;
};
constexpr std::array Known{
    Names{"time",
          " localtimestamp tsrecv siptimestamp time timestamp datetime timestamputc timeutc utc opentime "
          "unix unixtimestamp unixtime epoch windowstart starttime createdtime transacttime transactiontime "
          "eventtime tsevent gmttime localtime ts t date day data tradedt date1 "},
    Names{
        "product",
        " product symbol ticker instrument instrumentname contract code tckrsymb instrumentid pair market "},
    Names{"side", " side direction aggressorside takerside "},
    Names{"maker", " isbuyermaker maker wasbuyermaker buyermaker "},
    Names{"snapshot", " issnapshot "},
    Names{"open", " open o openprice opnpric otwarcie first "},
    Names{"high", " high h highprice hghpric max najwyzszy "},
    Names{"low", " low l lowprice lwpric min najnizszy "},
    Names{"close", " close c closeprice clspric closelast adjclose adjustedclose zamkniecie "},
    Names{"bid", " bid bidprice bestbidprice bidpx00 bidpx bestbid bids0price "},
    Names{
        "bidVolume",
        " bidvolume bidsize bidqty bidamount bidsz00 bidsz bidquantity bestbidqty bestbidsize bids0amount "},
    Names{"ask", " ask askprice bestaskprice askpx00 askpx bestask asks0price offer offerprice "},
    Names{"askVolume",
          " askvolume asksize askqty askamount asksz00 asksz askquantity bestaskqty bestasksize asks0amount "
          "offersize "},
    Names{"last", " last price tradeprice lastprice px rate "},
    Names{"volume",
          " volume lastvolume vol size qty quantity amount tradevolume tickvol tickvolume lastsize v wolumen "
          "sharevolume totaltradedquantity ttltradgvol tottrdqty ttltrdqnty "},
};

// Those that no publisher's column is named by.
constexpr std::array<std::string_view, 6> OwnParts{"date", "timeOfDay", "maker", "snapshot", "keep", "trade"};

std::string Fold(std::string_view name)
{
    std::string folded;
    for (const char c : name)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            folded += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return folded;
}

// The place of a part's name among its names; none: it is none of them.
std::optional<std::size_t> FindName(const Names& known, const std::string& folded)
{
    if (folded.empty()) return std::nullopt;
    const std::size_t at = known.names.find(" " + folded + " ");
    if (at != known.names.npos) return at;
    // "Volume BTC", "Volume_(BTC)": the first of several is that of the base.
    if (known.part == "volume" && folded.starts_with("volume")) return known.names.size();
    return std::nullopt;
}

std::vector<std::pair<std::string, std::string>> SplitGiven(std::string_view given)
{
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const auto range : std::views::split(given, ',')) {
        const std::string_view text(range.begin(), range.end());
        const std::size_t equals = text.rfind('=');
        if (equals == text.npos) continue;
        std::string_view part = text.substr(equals + 1);
        if (part == "price") part = "last";
        if (part == "size" || part == "lastVolume") part = "volume";
        pairs.emplace_back(text.substr(0, equals), part);
    }
    return pairs;
}

bool Has(const std::vector<std::string>& parts, std::string_view part)
{
    return std::ranges::find(parts, part) != parts.end();
}

}  // namespace

std::vector<std::string> nxFileColumns::GetParts(const std::vector<std::string>& names,
                                                 std::string_view given, bool areParts)
{
    std::vector<std::string> parts(names.size());
    std::vector<std::string> folded;
    for (const std::string& name : names)
        folded.push_back(Fold(name));
    for (const auto& [name, part] : SplitGiven(given)) {
        const auto at = std::ranges::find(folded, Fold(name));
        if (at == folded.end()) continue;
        parts[static_cast<std::size_t>(at - folded.begin())] = part;
        at->clear();
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!areParts || std::ranges::find(OwnParts, names[i]) == OwnParts.end()) continue;
        parts[i] = names[i];
        folded[i].clear();
    }
    // A date with a column of the time of day beside it.
    if (Has(parts, "date"))
        if (const auto at = std::ranges::find(folded, "time"); at != folded.end()) {
            parts[static_cast<std::size_t>(at - folded.begin())] = "timeOfDay";
            at->clear();
        }
    for (const Names& known : Known) {
        if (Has(parts, known.part) || (known.part == "time" && Has(parts, "date"))) continue;
        std::size_t best = names.size();
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto place = FindName(known, folded[i]);
            if (place && (best == names.size() || *place < *FindName(known, folded[best]))) best = i;
        }
        if (best == names.size()) continue;
        parts[best] = known.part;
        folded[best].clear();
    }
    std::ranges::replace(parts, "-", "");
    return parts;
}

std::size_t nxFileColumns::CountGiven(const std::vector<std::string>& names, std::string_view given)
{
    const auto pairs = SplitGiven(given);
    const bool hasAll = std::ranges::all_of(pairs, [&](const auto& pair) {
        return std::ranges::any_of(names,
                                   [&](const std::string& name) { return Fold(name) == Fold(pair.first); });
    });
    return hasAll ? pairs.size() : 0;
}

std::optional<nxFeedKind> nxFileColumns::TellKind(const std::vector<std::string>& parts,
                                                  std::string_view side)
{
    const auto barParts = {"open", "high", "low", "close"};
    if (std::ranges::count_if(barParts, [&](const char* part) { return Has(parts, part); }) >= 2)
        return nxFeedKind::Bar;
    if (Has(parts, "bid") || Has(parts, "ask")) return nxFeedKind::Quote;
    if (!Has(parts, "last")) return std::nullopt;
    const std::string folded = Fold(side);
    const bool isOfBook = folded == "bid" || folded == "ask" || folded == "b" || folded == "a";
    return Has(parts, "snapshot") || isOfBook ? nxFeedKind::Depth : nxFeedKind::Quote;
}

nxFeedColumn nxFileColumns::Get(std::string_view part, nxFeedKind kind)
{
    using enum nxFeedColumnType;
    static constexpr std::pair<std::string_view, nxFeedColumnType> types[] = {
        {"time", Time},         {"date", Date}, {"timeOfDay", TimeOfDay}, {"maker", MakerSide},
        {"snapshot", Snapshot}, {"keep", Keep}, {"trade", TradeMark},     {"", Skip}};
    const auto type = std::ranges::find(types, part, &std::pair<std::string_view, nxFeedColumnType>::first);
    if (type != std::end(types)) return {type->first, type->second};
    if (kind == nxFeedKind::Quote && part == "volume") part = "lastVolume";
    if (kind == nxFeedKind::Depth && part == "last") part = "price";
    if (kind == nxFeedKind::Bar && part == "last") part = "close";
    const auto& columns = nxFeedFormat::Get(kind).columns;
    const auto known = std::ranges::find(columns, part, &nxFeedColumn::name);
    return known == columns.end() ? nxFeedColumn{"", Skip} : *known;
}

std::vector<std::string> nxFileColumns::Split(std::string_view line, char separator)
{
    std::vector<std::string> cells;
    for (std::size_t at = 0; at <= line.size(); ++at) {
        while (at < line.size() && line[at] == ' ' && separator != ' ')
            ++at;
        std::string& cell = cells.emplace_back();
        if (at < line.size() && line[at] == '"') {
            for (++at; at < line.size() && (line[at] != '"' || line.substr(at, 2) == "\"\""); ++at) {
                if (line[at] == '"') ++at;
                cell += line[at];
            }
            at = std::min(line.find(separator, at), line.size());
            continue;
        }
        const std::size_t end = std::min(line.find(separator, at), line.size());
        cell = line.substr(at, end - at);
        while (cell.ends_with(' '))
            cell.pop_back();
        at = end;
    }
    return cells;
}
