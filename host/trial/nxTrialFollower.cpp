#include "host/trial/nxTrialFollower.h"

#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

#include "base/time/nxTimeSource.h"
#include "base/values/nxStringHelper.h"

namespace {

using Fields = std::span<const nxRunRecord::Field>;

const nxRunRecord::Field* Find(Fields fields, std::string_view name)
{
    for (const nxRunRecord::Field& field : fields)
        if (name == field.name) return &field;
    return nullptr;
}

std::string GetText(Fields fields, std::string_view name)
{
    const nxRunRecord::Field* const field = Find(fields, name);
    const auto* const text = field == nullptr ? nullptr : std::get_if<std::string_view>(&field->value);
    return text == nullptr ? std::string() : std::string(*text);
}

double GetNumber(Fields fields, std::string_view name)
{
    const nxRunRecord::Field* const field = Find(fields, name);
    if (field == nullptr) return std::numeric_limits<double>::quiet_NaN();
    return std::visit(
        [](const auto& value) {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>)
                return static_cast<double>(value);
            else
                return std::numeric_limits<double>::quiet_NaN();
        },
        field->value);
}

long long GetNow()
{
    const nxTimeStamp now = nxTimeSource::Now();
    return now.GetTotalNanoseconds();
}

}  // namespace

std::string nxTrialFollower::Trade::Describe() const
{
    const char* const verb = isFill ? (isBuy ? "bought" : "sold") : (isBuy ? "buy" : "sell");
    std::string text = fmt::format("{} {} {}", verb, nxStringHelper::GetAsString(volume), product);
    if (!isFill && type == "MARKET") text += " market";
    if (!std::isnan(price)) text += " at " + nxStringHelper::GetAsString(price);
    if (!std::isnan(stop)) text += " stop " + nxStringHelper::GetAsString(stop);
    return text;
}

double nxTrialFollower::GetPosition(long long time, const std::string& product) const
{
    double position = 0.0;
    for (const Trade& trade : trades)
        if (trade.isFill && trade.time <= time && (product.empty() || product == trade.product))
            position += trade.isBuy ? trade.volume : -trade.volume;
    return position;
}

void nxTrialFollower::OnEntry(const std::string&, const char* type, Fields fields)
{
    const std::string_view kind = type;
    const bool isOrder =
        kind == "order" && (GetText(fields, "request") == "new" || GetText(fields, "request") == "flatten");
    const bool isFill = kind == "orderEvent" && GetText(fields, "event") == "filled";
    if (isOrder || isFill) {
        Trade trade{.time = GetNow(), .isFill = isFill, .isBuy = GetText(fields, "side") == "BUY"};
        trade.volume = GetNumber(fields, isFill ? "fillVolume" : "volume");
        trade.price = GetNumber(fields, isFill ? "fillPrice" : "price");
        trade.stop = isFill ? std::numeric_limits<double>::quiet_NaN() : GetNumber(fields, "stopPrice");
        trade.product = GetText(fields, "product");
        trade.type = GetText(fields, "orderType");
        trades.push_back(std::move(trade));
    } else if (kind == "log") {
        logs.push_back({GetNow(), GetText(fields, "text")});
    } else if (kind == "callbackFailure") {
        failures.push_back({GetNow(), GetText(fields, "text")});
    }
}

void nxTrialFollower::BeforeStep(const nxFeedEvent*, const nxFeedProductTable&, long long time)
{
    _LookUpTo(time);
}

void nxTrialFollower::BeforeEnd()
{
    _LookUpTo(std::numeric_limits<long long>::max());
    _inspector.reset();
}

// Those that are before the time.
void nxTrialFollower::_LookUpTo(long long time)
{
    const bool isEnd = time == std::numeric_limits<long long>::max();
    for (; _looked < looks.size() && (isEnd || looks[_looked].time < time); ++_looked) {
        Look& look = looks[_looked];
        if (_inspector == nullptr) {
            look.came = "nothing: the script was not loaded";
            continue;
        }
        _inspector->StopIdle();
        std::string error;
        look.holds = _inspector->Test(nxScriptInspector::NoLevel, look.condition, error);
        const nxScriptInspector::Outcome outcome =
            _inspector->Evaluate(nxScriptInspector::NoLevel, look.name);
        look.came = outcome.value ? outcome.value->text : outcome.error;
        _inspector->Resume();
    }
}
