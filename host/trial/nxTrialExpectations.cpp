#include "host/trial/nxTrialExpectations.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include "base/time/nxTime.h"
#include "base/values/nxStringHelper.h"

namespace {

using Json = nxTrialExpectations::Json;
using Trade = nxTrialFollower::Trade;

constexpr long long End = std::numeric_limits<long long>::max();
constexpr const char* Keys[] = {"orders", "fills", "position", "profit", "log", "error", "globals"};
constexpr const char* TimeKeys[] = {"position", "log", "globals"};

// As a person, and Lua, would write it.
std::string GetLua(const Json& value)
{
    if (value.is_string()) return value.dump();
    if (value.is_number()) return nxStringHelper::GetAsString(value.get<double>());
    if (!value.is_object()) return value.dump();
    std::string text;
    for (const Json& each : value.at("list"))
        text += (text.empty() ? "" : ", ") + GetLua(each);
    for (const auto& [key, each] : value.at("keys").items())
        text += (text.empty() ? "" : ", ") + key + " = " + GetLua(each);
    return "{ " + text + " }";
}

bool IsSame(double a, double b)
{
    return std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)});
}

// Whether "buy 1 SIM at 100.25" or a shorter form names the trade: what it leaves out may be anything.
bool Names(const std::string& text, const Trade& trade)
{
    std::istringstream stream(text), own(trade.Describe());
    std::string word, verb;
    stream >> word;
    own >> verb;
    double number = 0.0;
    if (word != verb || !(stream >> number) || !IsSame(number, trade.volume)) return false;
    while (stream >> word) {
        if (word == "market") {
            if (trade.type != "MARKET") return false;
        } else if (word == "at" || word == "stop") {
            if (!(stream >> number) || !IsSame(number, word == "at" ? trade.price : trade.stop)) return false;
        } else if (word != trade.product) {
            return false;
        }
    }
    return true;
}

std::optional<bool> IsFill(const std::string& text)
{
    const std::string verb = text.substr(0, text.find(' '));
    if (verb == "bought" || verb == "sold") return true;
    if (verb == "buy" || verb == "sell") return false;
    return std::nullopt;
}

std::vector<Trade> Choose(const nxTrialFollower& run, bool isFill)
{
    std::vector<Trade> chosen;
    std::ranges::copy_if(run.trades, std::back_inserter(chosen),
                         [&](const Trade& trade) { return trade.isFill == isFill; });
    return chosen;
}

template <class List, class Tell>
std::string Join(const List& list, Tell tell)
{
    constexpr std::size_t most = 5;
    std::vector<std::string> texts;
    for (const auto& each : list)
        if (texts.size() < most) texts.push_back(tell(each));
    if (list.size() > most) texts.push_back(fmt::format("{} more", list.size() - most));
    return texts.empty() ? "none" : fmt::format("{}", fmt::join(texts, ", "));
}

std::string TellTrades(const std::vector<Trade>& trades)
{
    return Join(trades, [](const Trade& trade) { return trade.Describe(); });
}

// A count, or a list of all in their order. Empty: it holds; else what came.
std::string JudgeTrades(const Json& value, const std::vector<Trade>& trades)
{
    if (value.is_number())
        return IsSame(value.get<double>(), static_cast<double>(trades.size()))
                   ? ""
                   : fmt::format("{}: {}", trades.size(), TellTrades(trades));
    const Json& list = value.at("list");
    bool holds = list.size() == trades.size();
    for (std::size_t i = 0; holds && i < list.size(); ++i)
        holds = list[i].is_string() && Names(list[i].get<std::string>(), trades[i]);
    return holds ? "" : TellTrades(trades);
}

// Lines that hold the texts, in their order.
std::string JudgeLines(const Json& value, const std::vector<nxTrialFollower::Text>& lines,
                       std::optional<std::pair<long long, long long>> time)
{
    std::vector<std::string> own;
    for (const auto& line : lines)
        if (!time || (line.time >= time->first && line.time <= time->second)) own.push_back(line.text);
    const std::vector<Json> wanted =
        value.is_string() ? std::vector<Json>{value} : value.at("list").get<std::vector<Json>>();
    auto place = own.begin();
    for (const Json& text : wanted) {
        place = std::find_if(place, own.end(), [&](const std::string& line) {
            return text.is_string() && line.find(text.get<std::string>()) != line.npos;
        });
        if (place == own.end()) return Join(own, [](const std::string& line) { return "\"" + line + "\""; });
        ++place;
    }
    return {};
}

std::string JudgePosition(const Json& value, const nxTrialFollower& run, long long time)
{
    const auto judge = [&](const Json& wanted, const std::string& product) {
        const double came = run.GetPosition(time, product);
        return IsSame(wanted.get<double>(), came) ? std::string() : nxStringHelper::GetAsString(came);
    };
    if (value.is_number()) return judge(value, {});
    for (const auto& [product, wanted] : value.at("keys").items())
        if (const std::string came = judge(wanted, product); !came.empty()) return product + " = " + came;
    return {};
}

// Of an item "globals", which has one: its name and the condition in Lua that it has the value.
std::pair<std::string, std::string> GetGlobal(const Json& value)
{
    const auto global = value.at("keys").items().begin();
    return {global.key(), "(" + global.key() + ") == " + GetLua(global.value())};
}

// Empty, or what the value has to be.
std::string FindForm(const std::string& key, const Json& value)
{
    const bool isTable = value.is_object();
    const auto isEach = [&](const char* part, auto is) {
        return isTable && std::ranges::all_of(value.at(part), is);
    };
    const auto isText = [](const Json& each) { return each.is_string(); };
    const auto isNumber = [](const Json& each) { return each.is_number(); };
    if (key == "orders" || key == "fills")
        return value.is_number() || isEach("list", isText) ? "" : "a count or a list of texts";
    if (key == "position")
        return value.is_number() || isEach("keys", isNumber) ? "" : "a number, or one for each product";
    if (key == "profit") return value.is_number() ? "" : "a number";
    if (key == "globals") return isTable && !value.at("keys").empty() ? "" : "a table of values by names";
    return value.is_string() || isEach("list", isText) ? "" : "a text or a list of texts";
}

// The first and the last nanosecond that a time means: of whole seconds the whole second, else to its last
// digit. Null, or what is wrong with it.
const char* ReadSpan(const std::string& text, const std::string& date, std::pair<long long, long long>& span)
{
    const std::size_t blank = text.find(' '), point = text.find('.');
    const bool hasDate = blank != text.npos;
    nxTimeText reader;
    if (const char* const reason = reader.Read(hasDate ? text.substr(0, blank) : date,
                                               hasDate ? text.substr(blank + 1) : text, span.first))
        return reason;
    long long length = nxTime::NanosecondsPerSecond;
    for (std::size_t i = point; point != text.npos && i + 1 < text.size(); ++i)
        length /= 10;
    span.second = span.first + std::max(length, 1ll) - 1;
    return nullptr;
}

}  // namespace

std::string nxTrialExpectations::Item::Describe() const
{
    return (timeText.empty() ? "" : timeText + " ") +
           (key.empty() ? value.get<std::string>() : key + " = " + GetLua(value));
}

std::optional<nxTrialExpectations::Fault> nxTrialExpectations::Add(const Json& call)
{
    const auto line = call.at("line").get<unsigned int>();
    const Json& content = call.at("content");
    const auto refuse = [](unsigned int place, const std::string& text) {
        return Fault{place, "expect " + text, {}};
    };
    if (const auto fault = _AddKeys(content.at("keys"), line, {line, {}, {}, std::nullopt}))
        return refuse(line, *fault);
    for (const Json& item : content.at("list"))
        if (const auto fault = _AddTime(item, line)) return refuse(line, *fault);
    return std::nullopt;
}

std::optional<std::string> nxTrialExpectations::_AddKeys(const Json& keys, unsigned int line,
                                                         const Item& frame)
{
    for (const auto& [key, value] : keys.items()) {
        const std::vector<std::string> known =
            frame.time ? std::vector<std::string>(std::begin(TimeKeys), std::end(TimeKeys))
                       : std::vector<std::string>(std::begin(Keys), std::end(Keys));
        if (std::ranges::find(known, key) == known.end())
            return fmt::format("knows no \"{}\"{}; there are {}", key, frame.time ? " at a time" : "",
                               fmt::join(known, ", "));
        if (const std::string form = FindForm(key, value); !form.empty())
            return fmt::format("takes {} as {}, and not {}", key, form, GetLua(value));
        Item item = frame;
        item.key = key;
        item.line = frame.time ? frame.line : _sheet.FindLine(line, key);
        const Json entries = key == "globals" ? value.at("keys") : Json{{"", value}};
        for (const auto& [name, each] : entries.items()) {
            item.value = key == "globals" ? Json{{"list", Json::array()}, {"keys", {{name, each}}}} : each;
            _items.push_back(item);
        }
    }
    return std::nullopt;
}

// { "09:30:03", "buy 1 at 100.25", position = 1 }
std::optional<std::string> nxTrialExpectations::_AddTime(const Json& item, unsigned int line)
{
    const Json list = item.is_object() ? item.at("list") : Json::array();
    if (list.empty() || !std::ranges::all_of(list, [](const Json& each) { return each.is_string(); }))
        return "takes what happens at a time as { \"09:30:03\", \"buy 1 at 100.25\" }";
    const auto text = list[0].get<std::string>();
    std::pair<long long, long long> span;
    if (const char* const reason = ReadSpan(text, _date, span))
        return fmt::format("has a time \"{}\", {}", text, reason);
    const std::string first = list.size() > 1 ? list[1].get<std::string>() : text;
    const Item frame{_sheet.FindLine(line, first), {}, {}, span, text};
    for (std::size_t i = 1; i < list.size(); ++i) {
        if (!IsFill(list[i].get<std::string>()))
            return fmt::format(
                "does not understand \"{}\"; it is written as buy 1 at 100.25 or sell 2 market for "
                "an order, bought 1 at 100.25 for a fill",
                list[i].get<std::string>());
        Item own = frame;
        own.value = list[i];
        _items.push_back(std::move(own));
    }
    return _AddKeys(item.at("keys"), line, frame);
}

std::vector<nxTrialFollower::Look> nxTrialExpectations::GetLooks() const
{
    std::vector<nxTrialFollower::Look> looks;
    for (const Item& item : _items) {
        if (item.key != "globals") continue;
        const auto [name, condition] = GetGlobal(item.value);
        looks.push_back({item.time ? item.time->second : End, name, condition});
    }
    std::ranges::stable_sort(looks, {}, &nxTrialFollower::Look::time);
    return looks;
}

// Empty: it holds; else what came.
std::string nxTrialExpectations::_Judge(const Item& item, const nxTrialFollower& run, double profit) const
{
    const long long time = item.time ? item.time->second : End;
    if (item.key == "orders" || item.key == "fills")
        return JudgeTrades(item.value, Choose(run, item.key == "fills"));
    if (item.key == "position") return JudgePosition(item.value, run, time);
    if (item.key == "profit")
        return IsSame(item.value.get<double>(), profit) ? "" : nxStringHelper::GetAsString(profit);
    if (item.key == "log") return JudgeLines(item.value, run.logs, item.time);
    if (item.key == "error") return JudgeLines(item.value, run.failures, std::nullopt);
    if (item.key == "globals") {
        const std::string condition = GetGlobal(item.value).second;
        const auto look = std::ranges::find_if(run.looks, [&](const nxTrialFollower::Look& each) {
            return each.time == time && each.condition == condition;
        });
        return look == run.looks.end() || look->holds ? "" : look->came.empty() ? "nil" : look->came;
    }
    const auto text = item.value.get<std::string>();
    std::vector<Trade> then = Choose(run, *IsFill(text));
    std::erase_if(then,
                  [&](const Trade& trade) { return trade.time < item.time->first || trade.time > time; });
    return std::ranges::any_of(then, [&](const Trade& trade) { return Names(text, trade); })
               ? ""
               : TellTrades(then);
}

std::vector<nxTrialExpectations::Fault> nxTrialExpectations::Judge(const nxTrialFollower& run,
                                                                   double profit) const
{
    std::vector<Fault> faults;
    for (const Item& item : _items)
        if (const std::string came = _Judge(item, run, profit); !came.empty())
            faults.push_back({item.line, item.Describe(), came});
    return faults;
}
