#include "host/accounts/nxFeeCounter.h"

#include <chrono>

#include "host/exchange/nxExchangeEvent.h"

namespace {

long long GetMonth(long long time)
{
    const auto day =
        std::chrono::floor<std::chrono::days>(std::chrono::sys_time(std::chrono::nanoseconds(time)));
    const std::chrono::year_month_day date{day};
    return static_cast<int>(date.year()) * 12LL + static_cast<unsigned int>(date.month());
}

nxExactAmount GetLarger(const nxExactAmount& a, const nxExactAmount& b)
{
    return (a - b).IsNegative() ? b : a;
}

}  // namespace

nxExactAmount nxFeeCounter::Add(const nxExchangeEvent& fill, const nxDecimal& pointValue)
{
    if (_schedule.isMonthly && GetMonth(fill.time) != _month) {
        _month = GetMonth(fill.time);
        _traded = 0;
    }
    const nxExactAmount fee =
        _schedule.GetFee(fill.isMaker, fill.fillPrice, fill.fillVolume, pointValue, _traded);
    _traded += fill.fillVolume;
    if (!_schedule.minimum.IsValid()) return fee;
    const nxExactAmount minimum(_schedule.minimum, 1);
    const auto [order, isFirst] = _orders.try_emplace(fill.order);
    const nxExactAmount paid = isFirst ? nxExactAmount() : GetLarger(order->second, minimum);
    order->second += fee;
    return GetLarger(order->second, minimum) - paid;
}
