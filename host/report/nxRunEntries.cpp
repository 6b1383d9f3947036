#include "host/report/nxRunEntries.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/values/nxStringHelper.h"
#include "host/feed/nxFeedTime.h"

namespace {

constexpr std::size_t HalfOfOrders = 5'000;
constexpr std::size_t HalfOfLog = 2'500;
constexpr std::size_t MostFills = 20'000;  // of a product
constexpr std::size_t MostEvents = 50;     // of an order
constexpr std::size_t MostLines = 100;

using Fields = std::span<const nxRunRecord::Field>;

std::string_view GetText(Fields fields, std::string_view name)
{
    for (const nxRunRecord::Field& field : fields)
        if (field.name == name)
            if (const auto* text = std::get_if<std::string_view>(&field.value)) return *text;
    return {};
}

// Not a number for one that is missing.
double GetNumber(Fields fields, std::string_view name)
{
    for (const nxRunRecord::Field& field : fields)
        if (field.name == name)
            return std::visit(
                [](const auto& value) {
                    if constexpr (std::is_arithmetic_v<std::remove_cvref_t<decltype(value)>>)
                        return static_cast<double>(value);
                    return std::numeric_limits<double>::quiet_NaN();
                },
                field.value);
    return std::numeric_limits<double>::quiet_NaN();
}

unsigned int GetCount(Fields fields, std::string_view name)
{
    const double number = GetNumber(fields, name);
    return number > 0.0 && number < 0x1p32 ? static_cast<unsigned int>(number) : 0;
}

// As the number was before the record had it.
nxDecimal GetDecimal(double number)
{
    nxDecimal decimal;
    decimal.SetFromDouble(number, 10);
    decimal.Normalise(0);
    return decimal;
}

std::string Describe(double volume, double price)
{
    std::string text = std::isfinite(volume) ? nxStringHelper::GetAsString(volume) : std::string();
    if (std::isfinite(price)) text += (text.empty() ? "at " : " at ") + nxStringHelper::GetAsString(price);
    return text;
}

}  // namespace

void nxRunEntries::Take(long long time, const std::string& job, std::string_view type, Fields fields)
{
    if (type == "chartLine") return _TakeLine(time, job, fields);
    if (type == "order") return _TakeRequest(time, job, fields);
    if (type == "orderEvent") return _TakeEvent(time, job, fields);
    if (type == "fill") return _TakeFill(time, job, fields);
    if (type == "log") return _TakeLog(time, job, "log", GetText(fields, "text"));
    if (type == "state") return _TakeLog(time, job, GetText(fields, "level"), GetText(fields, "text"));
    if (type == "callbackFailure") return _TakeLog(time, job, "failure", GetText(fields, "text"));
    if (type == "outputParameter")
        _outputs[job][std::string(GetText(fields, "name"))] = GetText(fields, "value");
}

void nxRunEntries::_TakeLog(long long time, const std::string& job, std::string_view level,
                            std::string_view text)
{
    ++_logCount;
    nxResultLog row{time, job, std::string(level), std::string(text)};
    if (_firstLog.size() < HalfOfLog) return _firstLog.push_back(std::move(row));
    _lastLog.push_back(std::move(row));
    if (_lastLog.size() > HalfOfLog) _lastLog.pop_front();
}

nxResultOrder* nxRunEntries::_Find(unsigned int number)
{
    for (auto* orders : {&_firstOrders, &_lastOrders})
        if (const auto found = orders->find(number); found != orders->end()) return &found->second;
    return nullptr;
}

nxResultOrder& nxRunEntries::_Add(unsigned int number)
{
    if (nxResultOrder* const known = _Find(number)) return *known;
    if (_firstOrders.size() >= HalfOfOrders && _lastOrders.size() >= HalfOfOrders)
        _lastOrders.erase(_lastOrders.begin());
    nxResultOrder& made = (_firstOrders.size() < HalfOfOrders ? _firstOrders : _lastOrders)[number];
    made.order = number;
    return made;
}

void nxRunEntries::_AddEvent(nxResultOrder& order, long long time, std::string name, std::string text)
{
    // The latest is always there.
    if (order.events.size() == MostEvents) order.events.pop_back();
    order.events.push_back({time, std::move(name), std::move(text)});
}

void nxRunEntries::_TakeRequest(long long time, const std::string& job, Fields fields)
{
    const std::string_view request = GetText(fields, "request");
    const double volume = GetNumber(fields, "volume"), price = GetNumber(fields, "price");
    const unsigned int number = GetCount(fields, "order");
    if (request == "amend" || request == "pull") {
        if (nxResultOrder* const order = _Find(number))
            _AddEvent(*order, time, request == "pull" ? "pull sent" : "amendment sent",
                      Describe(volume, price));
        return;
    }
    nxResultOrder& order = _Add(number);
    order.job = job;
    order.product = GetText(fields, "product");
    order.side = GetText(fields, "side");
    order.type = GetText(fields, "orderType");
    if (const std::string_view execution = GetText(fields, "exec"); !execution.empty())
        order.type += " " + std::string(execution);
    order.volume = volume;
    order.price = price;
    order.sent = time;
    order.status = "PENDING";
    _AddEvent(order, time, "sent", fmt::format("{} {} {}", order.side, order.type, Describe(volume, price)));
}

void nxRunEntries::_TakeEvent(long long time, const std::string& job, Fields fields)
{
    const std::string_view event = GetText(fields, "event");
    if (event == "queueMoved") return;
    long long at = time;
    static_cast<void>(nxFeedTime::SetFromText(GetText(fields, "exchangeTime"), at));
    nxResultOrder* order = _Find(GetCount(fields, "order"));
    if (event == "childCreated") {
        order = &_Add(GetCount(fields, "order"));
        order->job = job;
        order->product = GetText(fields, "product");
        order->side = GetText(fields, "side");
        order->type = "child of " + std::to_string(GetCount(fields, "parent"));
        order->sent = at;
    }
    if (order == nullptr) return;
    order->status = GetText(fields, "status");
    order->volume = GetNumber(fields, "volume");
    if (const double price = GetNumber(fields, "price"); std::isfinite(price)) order->price = price;
    if (order->status == "FILLED" || order->status == "DELETED" || order->status == "REJECTED")
        order->end = at;
    std::string text(GetText(fields, "reason"));
    if (event == "filled") {
        const bool isMaker = GetNumber(fields, "maker") != 0.0;
        text =
            fmt::format("{}, {}", Describe(GetNumber(fields, "fillVolume"), GetNumber(fields, "fillPrice")),
                        isMaker ? "as a maker" : "as a taker");
    }
    _AddEvent(*order, at, std::string(event), text);
}

void nxRunEntries::_TakeFill(long long time, const std::string& job, Fields fields)
{
    const unsigned int number = GetCount(fields, "order"), volume = GetCount(fields, "volume");
    const double price = GetNumber(fields, "price"), mid = GetNumber(fields, "mid");
    const bool isMaker = GetNumber(fields, "maker") != 0.0;
    const std::string side(GetText(fields, "side"));
    nxResultProduct& product = _products[std::string(GetText(fields, "product"))];
    if (product.fillCount++ < MostFills)
        product.fills.push_back({time, job, side, price, volume, isMaker, number});
    nxResultOrder* const order = _Find(number);
    if (order == nullptr) return;
    order->executed += volume;
    order->prices += nxExactAmount(GetDecimal(price), volume);
    order->fees += nxExactAmount(GetDecimal(GetNumber(fields, "fee")), 1);
    if (!std::isfinite(mid)) return;
    order->hasSlippage = true;
    const nxDecimal over = GetDecimal(price) - GetDecimal(mid);
    order->slippage +=
        nxExactAmount(side == "BUY" ? over : -over, volume, GetDecimal(GetNumber(fields, "pointValue")));
}

void nxRunEntries::_TakeLine(long long time, const std::string& job, Fields fields)
{
    const std::string_view chart = GetText(fields, "chart"), name = GetText(fields, "line");
    const double value = GetNumber(fields, "value");
    if (!std::isfinite(value)) return;
    auto line = std::ranges::find_if(_lines, [&](const nxResultLine& known) {
        return known.job == job && known.chart == chart && known.line == name;
    });
    if (line == _lines.end()) {
        if (_lines.size() == MostLines) return;
        _lines.push_back({job, std::string(chart), std::string(name), 0, {}});
        line = _lines.end() - 1;
    }
    line->colour = GetCount(fields, "colour");
    line->values.Add({time, value, value, value});
}

void nxRunEntries::MoveTo(nxResult& result)
{
    for (nxResultJob& job : result.jobs)
        job.outputs = std::move(_outputs[job.name]);
    for (nxResultProduct& product : result.products) {
        nxResultProduct& told = _products[product.name];
        product.fillCount = told.fillCount;
        product.fills = std::move(told.fills);
    }
    for (auto* orders : {&_firstOrders, &_lastOrders})
        for (auto& [number, order] : *orders)
            result.orders.push_back(std::move(order));
    result.lines = std::move(_lines);
    result.log = std::move(_firstLog);
    result.log.insert(result.log.end(), std::make_move_iterator(_lastLog.begin()),
                      std::make_move_iterator(_lastLog.end()));
    result.logCount = _logCount;
}
