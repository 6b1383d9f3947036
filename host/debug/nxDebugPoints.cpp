#include "host/debug/nxDebugPoints.h"

#include <charconv>
#include <regex>
#include <string_view>

#include "host/feed/nxFeedTime.h"

namespace {

using Json = nlohmann::json;

struct HitRule
{
    std::string_view operation;
    unsigned long long number;
};

// The operation is empty for a number alone; the number is 0 where there is none.
HitRule ReadHits(std::string_view text)
{
    const std::size_t first = text.find_first_of("0123456789");
    std::string_view operation = text.substr(0, first);
    while (operation.ends_with(' '))
        operation.remove_suffix(1);
    HitRule rule{operation, 0};
    if (first == text.npos) return rule;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + first, end, rule.number);
    if (error != std::errc() || rest != end) rule.number = 0;
    return rule;
}

const char* GetKind(const nxFeedEvent& event)
{
    switch (event.kind) {
        case nxFeedKind::Depth:
            return "depth";
        case nxFeedKind::Bar:
            return "bar";
        case nxFeedKind::Quote:
            break;
    }
    return event.quote.IsTrade() ? "trade" : "quote";
}

void Put(Json& fields, const char* name, const nxDecimal& value)
{
    if (value.IsValid()) fields[name] = value.GetAsDouble();
}

void Put(Json& fields, const char* name, const nxVolume& value)
{
    if (value.IsValid()) fields[name] = value.GetValue();
}

void PutQuote(Json& fields, const nxFeedQuote& quote)
{
    Put(fields, "bid", quote.bid);
    Put(fields, "bidVolume", quote.bidVolume);
    Put(fields, "ask", quote.ask);
    Put(fields, "askVolume", quote.askVolume);
    Put(fields, "last", quote.last);
    Put(fields, "lastVolume", quote.lastVolume);
    if (quote.side == nxBuySell_Buy || quote.side == nxBuySell_Sell)
        fields["side"] = nxBuySellEnum(quote.side).GetAsString();
}

void PutBar(Json& fields, const nxFeedBar& bar)
{
    Put(fields, "open", bar.open);
    Put(fields, "high", bar.high);
    Put(fields, "low", bar.low);
    Put(fields, "close", bar.close);
    Put(fields, "volume", bar.volume);
}

// The condition's names for the values of a record.
struct Setter
{
    nxScriptConditions& conditions;
    const char* name;

    void operator()(std::string_view text) const { conditions.Set(name, text); }
    void operator()(double number) const { conditions.Set(name, number); }
    void operator()(unsigned int number) const { conditions.Set(name, number); }
    void operator()(long long number) const { conditions.Set(name, static_cast<double>(number)); }
    void operator()(unsigned long long number) const { conditions.Set(name, static_cast<double>(number)); }
    void operator()(bool value) const
    {
        if (value) conditions.Set(name, 1.0);
    }
    void operator()(const std::map<std::string, std::string>*) const {}
    void operator()(nxRunRecord::Json) const {}
};

nxDebugPoints::Point Read(const Json& json)
{
    nxDebugPoints::Point point;
    point.id = json.at("id");
    point.job = json.value("job", std::size_t{0});
    point.line = json.value("line", 0u);
    point.callback = json.value("callback", "");
    point.condition = json.value("condition", "");
    point.hits = json.value("hits", "");
    point.log = json.value("log", "");
    return point;
}

}  // namespace

void nxDebugPoints::Set(const Json& definitions)
{
    std::map<unsigned int, Point> known;
    for (auto* points : {&_lines, &_callbacks, &_events}) {
        for (Point& point : *points)
            known[point.id] = std::move(point);
        points->clear();
    }
    _marks.clear();
    const auto take = [&](const char* kind, std::vector<Point>& points) {
        for (const Json& json : definitions.value(kind, Json::array())) {
            Point& point = points.emplace_back(Read(json));
            const auto same = known.find(point.id);
            if (same == known.end()) continue;
            point.count = same->second.count;
            point.hasTold = same->second.hasTold;
            point.event = same->second.event;
        }
    };
    take("lines", _lines);
    take("callbacks", _callbacks);
    take("events", _events);
    _stopsAtFailures = definitions.value("failures", false);
    for (const Point& point : _lines) {
        if (_marks.size() <= point.job) _marks.resize(point.job + 1);
        std::vector<bool>& marks = _marks[point.job];
        if (marks.size() <= point.line) marks.resize(point.line + 1);
        marks[point.line] = true;
    }
    std::string ignored;  // they were compiled before, when they were set
    for (Point& point : _events)
        if (point.event < 0) point.event = _conditions.Add(point.condition, ignored);
    std::erase_if(_events, [](const Point& point) { return point.event < 0; });
}

Json nxDebugPoints::GetFields(const nxFeedEvent& event, const std::string& product)
{
    Json fields = {{"event", GetKind(event)},
                   {"product", product},
                   {"time", nxFeedTime::GetAsString(event.time)},
                   {"row", event.line}};
    if (event.kind == nxFeedKind::Quote) PutQuote(fields, event.quote);
    if (event.kind == nxFeedKind::Bar) PutBar(fields, event.bar);
    if (event.kind == nxFeedKind::Depth) fields["levels"] = event.levels.size();
    return fields;
}

void nxDebugPoints::_SetFields(const nxFeedEvent& event, const std::string& product)
{
    _conditions.Clear();
    const Json fields = GetFields(event, product);
    for (const auto& [name, value] : fields.items()) {
        if (value.is_string())
            _conditions.Set(name.c_str(), value.get_ref<const std::string&>());
        else
            _conditions.Set(name.c_str(), value.get<double>());
    }
}

void nxDebugPoints::_SetFields(const std::string& job, const char* type,
                               std::span<const nxRunRecord::Field> fields)
{
    _conditions.Clear();
    _conditions.Set("event", std::string_view(type));
    _conditions.Set("job", job);
    for (const nxRunRecord::Field& field : fields)
        std::visit(Setter{_conditions, field.name}, field.value);
}

std::string nxDebugPoints::MakeText(const std::string& log,
                                    const std::function<std::string(const std::string&)>& compute)
{
    std::string text;
    for (std::size_t i = 0; i < log.size();) {
        const std::size_t end = log[i] == '{' ? log.find('}', i) : std::string::npos;
        if (end == std::string::npos) {
            text += log[i++];
            continue;
        }
        text += compute(log.substr(i + 1, end - i - 1));
        i = end + 1;
    }
    return text;
}

bool nxDebugPoints::IsHit(Point& point)
{
    ++point.count;
    if (point.hits.empty()) return true;
    const auto [operation, number] = ReadHits(point.hits);
    if (operation == ">") return point.count > number;
    if (operation == ">=") return point.count >= number;
    if (operation == "<") return point.count < number;
    if (operation == "<=") return point.count <= number;
    if (operation == "%") return number != 0 && point.count % number == 0;
    return point.count == number;
}

const char* nxDebugPoints::CheckHits(const std::string& hits)
{
    if (hits.empty()) return nullptr;
    const auto [operation, number] = ReadHits(hits);
    for (const std::string_view known : {"", "=", "==", ">", ">=", "<", "<=", "%"})
        if (operation == known && number != 0) return nullptr;
    return "a count of hits is a number, or one of > >= < <= == % and a number";
}

std::string nxDebugPoints::ReadSentence(const std::string& text)
{
    static const std::regex sentence(
        R"(\s*(?:order\s+(\d+)|(?:an|any)\s+order)\s+(?:is\s+)?(fills|filled|accepted|triggered|amended|cancelled|rejected)\s*)",
        std::regex::icase);
    std::smatch match;
    if (!std::regex_match(text, match, sentence)) return text;
    const std::string verb = match[2].str() == "fills" ? "filled" : match[2].str();
    const std::string condition = "event == \"" + verb + "\"";
    return match[1].matched ? condition + " and order == " + match[1].str() : condition;
}
