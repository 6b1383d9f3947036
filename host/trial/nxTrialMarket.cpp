#include "host/trial/nxTrialMarket.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "host/feed/nxFeedTime.h"

namespace {

using Json = nxTrialMarket::Json;

constexpr const char* Forms =
    "a row is TIME and then BID VOLUME x ASK VOLUME, trade PRICE VOLUME, bar OPEN HIGH LOW CLOSE VOLUME, or "
    "depth bid PRICE VOLUME | ask PRICE VOLUME";

[[noreturn]] void Refuse(const std::string& text)
{
    throw std::runtime_error(text);
}

std::string GetNumber(const std::string& word, const char* what)
{
    nxDecimal number;
    if (!number.SetFromString(word).IsSuccess())
        Refuse(fmt::format("\"{}\" is no {}; {}", word, what, Forms));
    return word;
}

std::string GetVolume(const std::string& word)
{
    if (word.starts_with('-')) Refuse(fmt::format("\"{}\" is no volume: it is below 0", word));
    return GetNumber(word, "volume");
}

// As a value of TOML.
std::string GetToml(const Json& value)
{
    if (!value.is_object()) return value.dump();
    std::string text;
    const bool isList = value.at("keys").empty();
    for (const Json& each : value.at("list"))
        text += (text.empty() ? "" : ", ") + GetToml(each);
    if (isList) return "[" + text + "]";
    for (const auto& [key, each] : value.at("keys").items())
        text += (text.empty() ? "" : ", ") + key + " = " + GetToml(each);
    return "{ " + text + " }";
}

}  // namespace

std::optional<nxTrialMarket::Fault> nxTrialMarket::Add(const Json& call)
{
    unsigned int line = call.at("line").get<unsigned int>();
    const Json& content = call.at("content");
    if (const Json& keys = content.at("keys"); !keys.empty()) {
        if (!keys.contains("product") || !keys.at("product").is_string())
            return Fault{line, "market describes no product; write market { product = \"SIM\" }"};
        _Describe(keys, line);
    }
    for (const Json& row : content.at("list")) {
        if (!row.is_string()) return Fault{line, std::string("a row of market is no text; ") + Forms};
        const auto text = row.get<std::string>();
        const unsigned int own = _sheet.FindLine(line, text);
        try {
            _AddRow(text, own);
        } catch (const std::runtime_error& error) {
            return Fault{own, fmt::format("\"{}\": {}", text, error.what())};
        }
        line = own;
    }
    return std::nullopt;
}

void nxTrialMarket::_Describe(const Json& keys, unsigned int line)
{
    const auto name = keys.at("product").get<std::string>();
    _products.push_back(name);
    std::string text = "[[product]]\nname = " + keys.at("product").dump() + "\n";
    for (const auto& [key, value] : keys.items()) {
        if (key == "barPeriod" && value.is_string())
            _barPeriods.push_back(name + "=" + value.get<std::string>());
        else if (key != "product")
            text += key + " = " + GetToml(value) + "\n";
    }
    _descriptions.lines.resize(
        _descriptions.lines.size() + static_cast<std::size_t>(std::ranges::count(text, '\n')), line);
    _descriptions.text += text;
}

std::string nxTrialMarket::_TakeTime(Words& words)
{
    if (!words.empty() && !nxTimeText::IsTimeOfDay(words.front())) {
        _date = words.front();
        words.erase(words.begin());
    }
    if (words.empty()) Refuse(std::string("there is no time; ") + Forms);
    long long time = 0;
    if (const char* const reason = _times.Read(_date, words.front(), time))
        Refuse(fmt::format("{} {}: {}; a time is written as 09:30:00 or 2024-01-08 09:30:00.5", _date,
                           words.front(), reason));
    words.erase(words.begin());
    if (_last && time < *_last) Refuse("comes before the row above it; rows stand in the order of time");
    if (!_last) _firstDate = _date;
    _last = time;
    return nxFeedTime::GetAsFileText(time);
}

std::string nxTrialMarket::_TakeProduct(Words& words) const
{
    const auto named = std::ranges::find(_products, words.empty() ? "" : words.front());
    if (named == _products.end()) return _products.empty() ? "SIM" : _products.front();
    words.erase(words.begin());
    return *named;
}

void nxTrialMarket::_AddRow(const std::string& row, unsigned int line)
{
    std::istringstream stream(row);
    Words words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    const std::string time = _TakeTime(words);
    const std::string head = time + "," + _TakeProduct(words) + ",";
    if (words.empty()) Refuse(std::string("there is nothing after the time; ") + Forms);
    const std::string kind = words.front();
    const Words cells(words.begin() + 1, words.end());
    if (kind == "trade") return _AddTrade(head, cells, line);
    if (kind == "bar") return _AddBar(head, cells, line);
    if (kind == "depth") return _AddDepth(head, cells, line);
    _AddQuote(head, words, line);
}

void nxTrialMarket::_AddQuote(const std::string& head, const Words& words, unsigned int line)
{
    const auto middle = std::ranges::find(words, "x");
    if (middle == words.end())
        Refuse(
            fmt::format("\"{}\" is neither a described product nor a kind of row; {}", words.front(), Forms));
    const auto side = [](const Words& cells) -> std::string {
        if (cells.size() == 1 && cells[0] == "-") return ",";
        if (cells.size() != 2) Refuse("a side of a quote is PRICE VOLUME, or - for none");
        return GetNumber(cells[0], "price") + "," + GetVolume(cells[1]);
    };
    _quotes.text += head + side({words.begin(), middle}) + "," + side({middle + 1, words.end()}) + ",,,\n";
    _quotes.lines.push_back(line);
}

void nxTrialMarket::_AddTrade(const std::string& head, const Words& words, unsigned int line)
{
    const bool hasSide = words.size() == 3;
    if (words.size() != 2 && !hasSide)
        Refuse("a trade is trade PRICE VOLUME, and buy or sell where it is known");
    if (hasSide && words[2] != "buy" && words[2] != "sell")
        Refuse(fmt::format("the side of a trade is buy or sell, and not \"{}\"", words[2]));
    _quotes.text += head + ",,,," + GetNumber(words[0], "price") + "," + GetVolume(words[1]) + "," +
                    (!hasSide            ? ""
                     : words[2] == "buy" ? "BUY"
                                         : "SELL") +
                    "\n";
    _quotes.lines.push_back(line);
}

void nxTrialMarket::_AddBar(const std::string& head, const Words& words, unsigned int line)
{
    constexpr std::size_t cells = 5;
    if (words.size() != cells) Refuse("a bar is bar OPEN HIGH LOW CLOSE VOLUME");
    std::string text = head;
    for (std::size_t i = 0; i + 1 < cells; ++i)
        text += GetNumber(words[i], "price") + ",";
    _bars.text += text + GetVolume(words.back()) + "\n";
    _bars.lines.push_back(line);
}

void nxTrialMarket::_AddDepth(const std::string& head, const Words& words, unsigned int line)
{
    Words cells = words;
    std::erase(cells, "|");
    constexpr std::size_t perLevel = 3;
    if (cells.empty() || cells.size() % perLevel != 0)
        Refuse("a change of depth is depth bid PRICE VOLUME | ask PRICE VOLUME, with any number of levels");
    for (std::size_t i = 0; i < cells.size(); i += perLevel) {
        if (cells[i] != "bid" && cells[i] != "ask")
            Refuse(fmt::format("the side of a level is bid or ask, and not \"{}\"", cells[i]));
        _depth.text += head + (cells[i] == "bid" ? "BUY," : "SELL,") + GetNumber(cells[i + 1], "price") +
                       "," + GetVolume(cells[i + 2]) + "\n";
        _depth.lines.push_back(line);
    }
}

bool nxTrialMarket::HasRows() const
{
    return !_quotes.text.empty() || !_depth.text.empty() || !_bars.text.empty();
}

bool nxTrialMarket::Write(const std::string& folder, nxRunOptions& options, nxRunArguments& arguments) const
{
    for (const File* file : {&_quotes, &_depth, &_bars, &_descriptions}) {
        if (file->text.empty()) continue;
        const std::string path = folder + "/" + file->name;
        std::ofstream stream(path);
        stream << file->header << file->text;
        if (!stream.flush()) return false;
        if (file == &_descriptions)
            options.productFile = path;
        else
            options.data.push_back(path);
    }
    arguments.barPeriods.insert(arguments.barPeriods.end(), _barPeriods.begin(), _barPeriods.end());
    return true;
}

std::optional<nxTrialMarket::Fault> nxTrialMarket::Explain(const std::string& message) const
{
    for (const File* file : {&_quotes, &_depth, &_bars, &_descriptions}) {
        const std::string mark = std::string("/") + file->name + ":";
        const std::size_t place = message.find(mark);
        if (place == std::string::npos) continue;
        std::size_t line = 0;
        const char* const begin = message.data() + place + mark.size();
        std::from_chars(begin, message.data() + message.size(), line);
        const std::size_t index = line - (*file->header == '\0' ? 1 : 2);
        const std::size_t text = message.find(": ", place);
        return Fault{index < file->lines.size() ? file->lines[index] : 0,
                     message.substr(text == std::string::npos ? 0 : text + 2)};
    }
    return std::nullopt;
}
