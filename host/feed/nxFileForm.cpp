#include "host/feed/nxFileForm.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>

#include "base/time/nxTime.h"
#include "host/feed/nxFileColumns.h"

namespace {

constexpr std::string_view Separators = ",;\t|";

bool IsComment(std::string_view line)
{
    return line.starts_with('#') || line.starts_with("//");
}

std::string_view TakeLine(std::string_view& text)
{
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

// The name of the file without folders and endings, as far as they tell how it is packed or that it is text.
std::string GetStem(const std::string& path)
{
    std::filesystem::path name = std::filesystem::path(path).filename();
    for (const char* ending : {".gz", ".zst", ".xz", ".bz2", ".zip", ".csv", ".txt"})
        if (name.extension() == ending) name = name.stem();
    return name.string();
}

std::string GetNamedProduct(const std::string& stem, nxFeedLayout::NamePart part)
{
    if (part.mark == '\0') return stem;
    std::size_t begin = 0;
    for (unsigned int i = 0; i < part.index && begin != std::string::npos; ++i)
        begin = stem.find(part.mark, begin) + 1;
    const std::string product = stem.substr(begin, stem.find(part.mark, begin) - begin);
    return product.empty() ? stem : product;
}

// YYYY-MM-DD or YYYYMMDD, the first in the name.
std::optional<long long> GetNamedDay(const std::string& name)
{
    nxTimeText reader;
    for (std::size_t at = 0; at < name.size(); ++at) {
        if (at > 0 && std::isdigit(static_cast<unsigned char>(name[at - 1])) != 0) continue;
        for (const std::size_t size : {std::size_t{10}, std::size_t{8}}) {
            const std::string text = name.substr(at, size);
            long long time = 0;
            if (text.size() == size && (size == 8) == (text.find('-') == text.npos) && text[0] <= '2' &&
                reader.Read(text, time) == nullptr &&
                std::ranges::all_of(text, [](char c) { return c == '-' || (c >= '0' && c <= '9'); }))
                return time / nxTime::NanosecondsPerDay;
        }
    }
    return std::nullopt;
}

// Finds out how a file is written. Used once.
class Finder
{
public:
    Finder(nxFileForm& form, std::string_view text, const std::string& path, const std::string& entryName,
           const nxFileFormOptions& options, nxFeedError& error)
        : _form(form), _text(text), _path(path), _entryName(entryName), _options(options), _error(error)
    {
    }

    bool Find(std::size_t& begin, unsigned long long& line)
    {
        _layout = _options.layout;
        _line = line;
        if (!_FindNames()) return false;
        begin = _text.size() - _rows.size();
        line = _line;
        _form.isForeign = true;
        _form.separator = _separator;
        return _CheckNames() && _FindParts() && _FindProduct() && _FindTimes() && _FindTerms() && _Describe();
    }

private:
    struct Candidate
    {
        std::vector<std::string> names, parts;
        const nxFeedLayout* layout = nullptr;
        char separator = ',';
        std::string_view rows;
        unsigned long long line = 0;
        std::size_t score = 0;
    };

    bool _Fail(std::string reason)
    {
        _error = {_path, _line, 0, std::move(reason)};
        return false;
    }
    bool _FindNames();
    void _TryHeader(std::string_view line, std::string_view rows, unsigned long long number, Candidate& best);
    bool _FindPlaces(std::string_view columns);
    bool _CheckNames();
    bool _FindParts();
    bool _FindProduct();
    bool _FindTimes();
    bool _FindTerms();
    bool _Describe();
    void _ReadSample();
    std::string _GetCell(std::size_t column) const;
    void _FindTimeOfDay();
    void _Drop(std::string_view part);
    bool _CheckRequired(nxFeedKind kind);
    void _FindDay(const std::vector<std::string_view>& cells);
    bool _DoFall(const std::vector<std::string_view>& cells) const;
    std::optional<std::size_t> _Get(std::string_view part) const;

    nxFileForm& _form;
    const std::string_view _text;
    const std::string& _path;
    const std::string& _entryName;
    const nxFileFormOptions& _options;
    nxFeedError& _error;
    const nxFeedLayout* _layout = nullptr;
    std::vector<std::string> _names, _parts;
    std::vector<std::vector<std::string>> _sample;  // the first rows
    char _separator = ',';
    std::string_view _rows;        // from the first row on
    unsigned long long _line = 0;  // those in front of it
    std::string _productSource;
};

std::optional<std::size_t> Finder::_Get(std::string_view part) const
{
    const auto at = std::ranges::find(_parts, part);
    if (at == _parts.end()) return std::nullopt;
    return static_cast<std::size_t>(at - _parts.begin());
}

bool Finder::_FindNames()
{
    if (!_options.columns.empty()) return _FindPlaces(_options.columns);
    if (_layout != nullptr && _layout->isByPlace) return _FindPlaces(_layout->columns);
    constexpr unsigned int mostInFront = 8;  // lines in front of the header, as some publishers write
    Candidate best;
    std::string_view rest = _text;
    for (unsigned long long number = _line + 1, tried = 0; !rest.empty() && tried < mostInFront; ++number) {
        const std::string_view line = TakeLine(rest);
        if (line.empty() || IsComment(line)) continue;
        ++tried;
        _TryHeader(line, rest, number, best);
    }
    if (best.score == 0) {
        std::string known;
        for (const nxFeedKind kind : {nxFeedKind::Quote, nxFeedKind::Depth, nxFeedKind::Bar})
            known += (known.empty() ? " " : " | ") + nxFeedFormat::Get(kind).GetHeader();
        ++_line;
        return _Fail("no header row; known are" + known +
                     ", and names like these. --columns names the columns of a file without one, or --layout "
                     "NAME tells who wrote it; see 'algoserver layouts'");
    }
    _names = best.names;
    _parts = best.parts;
    _layout = best.layout;
    _separator = best.separator;
    _rows = best.rows;
    _line = best.line;
    return true;
}

// A header is told by two names at least.
void Finder::_TryHeader(std::string_view line, std::string_view rows, unsigned long long number,
                        Candidate& best)
{
    for (const char separator : Separators) {
        Candidate candidate{nxFileColumns::Split(line, separator), {}, _layout, separator, rows, number, 0};
        if (candidate.names.size() < 2) continue;
        std::size_t most = 0;
        for (const nxFeedLayout& layout : nxFeedLayout::GetAll()) {
            if (_options.layout != nullptr || layout.isByPlace || layout.isAsked) continue;
            const std::size_t count = nxFileColumns::CountGiven(candidate.names, layout.columns);
            if (count > most) candidate.layout = &layout;
            most = std::max(most, count);
        }
        candidate.parts = nxFileColumns::GetParts(
            candidate.names, candidate.layout == nullptr ? std::string_view() : candidate.layout->columns);
        candidate.score = static_cast<std::size_t>(
            std::ranges::count_if(candidate.parts, [](const std::string& part) { return !part.empty(); }));
        if (candidate.score >= 2 && candidate.score > best.score) best = std::move(candidate);
    }
}

// Of a file whose columns are known by their places; it may have a header row all the same.
bool Finder::_FindPlaces(std::string_view columns)
{
    _names = nxFileColumns::Split(columns, ',');
    _parts = nxFileColumns::GetParts(_names, {}, true);
    _rows = _text;
    std::string_view rest = _rows, line;
    unsigned long long number = _line;
    do {
        line = TakeLine(rest);
        ++number;
    } while ((line.empty() || IsComment(line)) && !rest.empty());
    _separator = _layout != nullptr ? _layout->separator : '\0';
    if (_separator == '\0')
        _separator = *std::ranges::max_element(
            Separators, {}, [line](char separator) { return nxFileColumns::Split(line, separator).size(); });
    const std::vector<std::string> cells = nxFileColumns::Split(line, _separator);
    const std::size_t time = _Get("date") ? *_Get("date") : *_Get("time");
    const bool isHeader =
        time < cells.size() && std::ranges::none_of(cells[time], [](char c) { return c >= '0' && c <= '9'; });
    if (isHeader) {
        _rows = rest;
        _line = number;
    }
    return true;
}

// Which of two columns of one name counts, only the publisher knows.
bool Finder::_CheckNames()
{
    if (!_Get("time") && !_Get("date"))
        return _Fail(fmt::format("no time among the columns \"{}\"", fmt::join(_names, "\", \"")));
    for (std::size_t i = 0; i < _names.size() && _layout == nullptr; ++i)
        if (!_parts[i].empty() && std::ranges::count(_names, _names[i]) > 1)
            return _Fail("column given twice: \"" + _names[i] + "\"");
    return true;
}

bool Finder::_FindParts()
{
    _ReadSample();
    _FindTimeOfDay();
    const auto side = _Get("side");
    auto kind = nxFileColumns::TellKind(_parts, side ? _GetCell(*side) : std::string());
    if (_layout != nullptr) kind = _layout->kind;
    if (!kind)
        return _Fail(
            fmt::format("neither prices of bars, nor bid and ask, nor a price among the columns \"{}\"",
                        fmt::join(_names, "\", \"")));
    _form.format = &nxFeedFormat::Get(*kind);
    // What another column says better, or what says nothing alone.
    if (*kind == nxFeedKind::Bar && _Get("close")) _Drop("last");
    if (*kind == nxFeedKind::Quote && !_Get("last")) _Drop("volume");
    if (!_CheckRequired(*kind)) return false;
    for (const std::string& part : _parts)
        _form.columns.push_back(nxFileColumns::Get(part, *kind));
    while (_form.columns.back().type == nxFeedColumnType::Skip)
        _form.columns.pop_back();
    return true;
}

void Finder::_ReadSample()
{
    constexpr std::size_t mostRows = 4096;
    std::string_view rest = _rows;
    while (!rest.empty() && _sample.size() < mostRows) {
        const std::string_view line = TakeLine(rest);
        if (!line.empty() && !IsComment(line)) _sample.push_back(nxFileColumns::Split(line, _separator));
    }
}

// Of the first row; empty where there is none.
std::string Finder::_GetCell(std::size_t column) const
{
    return !_sample.empty() && column < _sample.front().size() ? _sample.front()[column] : std::string();
}

// "Date,Time": the time that was found is that of the day. A date alone is a time as well.
void Finder::_FindTimeOfDay()
{
    if (const auto time = _Get("time"); time && nxTimeText::IsTimeOfDay(_GetCell(*time)) && !_Get("date"))
        for (std::size_t i = 0; i < _names.size(); ++i)
            if (_parts[i].empty() && nxFileColumns::GetParts({_names[i]}).front() == "time" &&
                !nxTimeText::IsTimeOfDay(_GetCell(i)))
            {
                _parts[i] = "date";
                _parts[*time] = "timeOfDay";
                break;
            }
    if (const auto date = _Get("date"); date && !_Get("timeOfDay")) _parts[*date] = "time";
}

void Finder::_Drop(std::string_view part)
{
    if (const auto column = _Get(part)) _parts[*column].clear();
}

bool Finder::_CheckRequired(nxFeedKind kind)
{
    std::vector<std::string_view> missing;
    for (const nxFeedColumn& column : _form.format->columns) {
        const bool isNeeded = column.required && column.type != nxFeedColumnType::Time &&
                              column.type != nxFeedColumnType::Product &&
                              !(kind == nxFeedKind::Bar && column.isSize);
        const bool isThere = std::ranges::any_of(_parts, [&](const std::string& part) {
            return !part.empty() && nxFileColumns::Get(part, kind).name == column.name;
        });
        if (isNeeded && !isThere) missing.push_back(column.name);
    }
    return missing.empty() || _Fail(fmt::format("{} without {}: the columns are \"{}\"", _form.format->name,
                                                fmt::join(missing, ", "), fmt::join(_names, "\", \"")));
}

bool Finder::_FindProduct()
{
    if (_Get("product") && _options.product.empty()) return true;
    if (const auto column = _Get("product")) {
        _parts[*column].clear();
        _form.columns[*column] = nxFileColumns::Get("", _form.format->kind);
    }
    _form.product = _options.product;
    _productSource = " (--product)";
    if (!_form.product.empty()) return true;
    if (_path == "-" && _entryName.empty())
        return _Fail("no column of products, and standard input has no name; --product tells it");
    _form.product = GetNamedProduct(GetStem(_entryName.empty() ? _path : _entryName),
                                    _layout == nullptr ? nxFeedLayout::NamePart() : _layout->product);
    _productSource = " (by the file's name)";
    return true;
}

bool Finder::_FindTimes()
{
    nxTimeText& time = _form.time;
    time.zone = _options.zone;
    time.day = _options.day;
    time.isDayFirst = _options.isDayFirst;
    std::string reason;
    if (_layout != nullptr && !time.zone && !_layout->zone.empty()) {
        time.zone = nxTimeZone::Find(std::string(_layout->zone), reason);
        if (!time.zone) return _Fail(reason);
    }
    const std::size_t column = _Get("date") ? *_Get("date") : *_Get("time");
    std::vector<std::string_view> cells;
    for (const auto& row : _sample)
        if (column < row.size()) cells.push_back(row[column]);
    _FindDay(cells);
    if (!time.Learn(cells, reason)) return _Fail("\"" + _names[column] + "\": " + reason);
    _form.isNewestFirst = !_Get("date") && _DoFall(cells);
    return true;
}

// Whether the times are those of a day, and of which.
void Finder::_FindDay(const std::vector<std::string_view>& cells)
{
    nxTimeText& time = _form.time;
    if (_layout != nullptr) time.dayUnit = _layout->dayUnit;
    // Numbers below a day's milliseconds are none since 1970, of which those would be of its first weeks.
    const auto isSmall = [](std::string_view cell) {
        return !cell.empty() && cell.size() <= 8 &&
               std::ranges::all_of(cell, [](char c) { return c >= '0' && c <= '9'; });
    };
    if (time.dayUnit == nxTimeText::DayUnit::None && !_Get("date") && !cells.empty() &&
        std::ranges::all_of(cells, isSmall) && (cells.front().size() < 8 || time.day))
        time.dayUnit = nxTimeText::DayUnit::Milliseconds;
    if (time.dayUnit == nxTimeText::DayUnit::None || time.day) return;
    time.day = GetNamedDay(_entryName);
    if (!time.day) time.day = GetNamedDay(std::filesystem::path(_path).filename().string());
}

// Newest first: later rows are never later.
bool Finder::_DoFall(const std::vector<std::string_view>& cells) const
{
    nxTimeText reader = _form.time;
    long long first = 0, before = 0;
    if (cells.size() < 2 || reader.Read(cells.front(), first) != nullptr) return false;
    before = first;
    for (const std::string_view cell : cells) {
        long long time = 0;
        if (reader.Read(cell, time) != nullptr || time > before) return false;
        before = time;
    }
    return before < first;
}

bool Finder::_FindTerms()
{
    _form.scale = _options.priceScale;
    if (_layout == nullptr) return true;
    const auto price = std::ranges::find_if(_form.columns, [](const nxFeedColumn& column) {
        return column.type == nxFeedColumnType::Number && !column.isSize;
    });
    const auto column = static_cast<std::size_t>(price - _form.columns.begin());
    const bool isWhole = std::ranges::all_of(_sample, [column](const auto& row) {
        return column >= row.size() || row[column].find('.') == std::string::npos;
    });
    // What is written with a point is no whole number of anything.
    if (!_form.scale.IsValid() && !_layout->scale.empty() && isWhole)
        _form.scale.SetFromString(std::string(_layout->scale));
    _form.layout = _layout->name;
    _form.isZeroNone = _layout->isZeroNone;
    _form.trade = _layout->trade;
    _form.stamp = _layout->stamp;
    if (!_layout->keep.empty()) _form.keep = nxFileColumns::Split(_layout->keep, '|');
    return true;
}

bool Finder::_Describe()
{
    const bool isOfTrades = _form.format->kind == nxFeedKind::Quote && !_Get("bid") && !_Get("ask");
    std::vector<std::string> taken, ignored;
    for (std::size_t i = 0; i < _names.size(); ++i) {
        if (_parts[i].empty()) {
            if (_names[i] != "-" && !_names[i].empty()) ignored.push_back("\"" + _names[i] + "\"");
        } else if (_parts[i] != _names[i]) {
            taken.push_back(fmt::format("{} from \"{}\"", _parts[i], _names[i]));
        }
    }
    std::string& text = _form.description;
    text = isOfTrades ? "trades" : _form.format->name;
    if (!_form.product.empty()) text += " of " + _form.product + _productSource;
    if (_layout != nullptr) text += fmt::format(", layout {}", _layout->name);
    const std::size_t time = _Get("date") ? *_Get("date") : *_Get("time");
    if (!_sample.empty() && time < _sample.front().size())
        text += ", times are " + _form.time.Describe(_GetCell(time) + (_Get("timeOfDay") ? " 00:00" : ""));
    if (_form.isNewestFirst) text += ", newest first";
    if (_form.scale.IsValid()) text += ", prices in " + _form.scale.GetAsString();
    if (!taken.empty()) text += fmt::format("; {}", fmt::join(taken, ", "));
    if (!ignored.empty()) text += fmt::format("; ignored: {}", fmt::join(ignored, ", "));
    return true;
}

}  // namespace

bool nxFileForm::SetOwn(std::string_view header)
{
    std::vector<std::string> names;
    // As it stands: a blank beside a name makes the file another's.
    for (std::size_t at = 0; at <= header.size();) {
        const std::size_t end = std::min(header.find(',', at), header.size());
        std::string_view name = header.substr(at, end - at);
        if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
            name = name.substr(1, name.size() - 2);
        names.emplace_back(name);
        at = end + 1;
    }
    format = nxFeedFormat::Tell(names, columns);
    return format != nullptr;
}

bool nxFileForm::Find(std::string_view text, const std::string& path, const std::string& entryName,
                      const nxFileFormOptions& options, std::size_t& begin, unsigned long long& line,
                      nxFeedError& error)
{
    return Finder(*this, text, path, entryName, options, error).Find(begin, line);
}
