#include "host/exchange/nxOrderExpiries.h"

#include <algorithm>

#include "host/feed/nxFeedTime.h"

using nxTime::Never;

long long nxOrderExpiries::GetEnd(const nxDateTime& date)
{
    using namespace nxTime;
    if (date.GetAsTimeValue() >= (Never - NanosecondsPerDay) / NanosecondsPerSecond) return Never;
    return nxFeedTime::GetNextMidnight(date.GetAsTimeValue() * NanosecondsPerSecond);
}

long long nxOrderExpiries::GetEnd(const nxExchangeOrder& order, const nxTradingHours& hours, long long now)
{
    switch (order.kind.duration) {
        case nxOrderDuration::Day:
        case nxOrderDuration::PreOpen: {
            if (hours.IsEmpty()) return nxFeedTime::GetNextMidnight(now);
            const long long next = hours.GetNextChange(now);
            // Before the opening the next change is that; the day ends with the one after it.
            return hours.IsOpen(now) || next == Never ? next : hours.GetNextChange(next);
        }
        case nxOrderDuration::Date:
            return GetEnd(order.terms.expiry);
        case nxOrderDuration::Cancelled:
        case nxOrderDuration::Open:
            break;
    }
    return Never;
}

long long nxOrderExpiries::GetEndOfDay(long long barEnd, const nxTradingHours& hours)
{
    const long long inside = nxTime::GetEarlier(barEnd, 1);
    return hours.IsOpen(inside) && hours.GetNextChange(inside) != Never ? hours.GetNextChange(inside)
                                                                        : nxFeedTime::GetNextMidnight(inside);
}

void nxOrderExpiries::Add(const nxExchangeOrder& order)
{
    if (order.expires == Never) return;
    Expiry& expiry = _byTime[order.expires];
    if (expiry.orders.size() == expiry.sweepAt) {
        _Sweep(expiry.orders, order.expires);
        expiry.sweepAt = std::max<std::size_t>(expiry.sweepAt, 2 * expiry.orders.size());
    }
    expiry.orders.push_back(order.id);
}

std::vector<unsigned int> nxOrderExpiries::TakeNext()
{
    auto next = _byTime.extract(_byTime.begin());
    std::vector<unsigned int>& orders = next.mapped().orders;
    _Sweep(orders, next.key());
    // One whose date was changed and changed back is there twice.
    std::ranges::sort(orders);
    orders.erase(std::unique(orders.begin(), orders.end()), orders.end());
    return std::move(orders);
}

// Leaves those that end at that time. One that is on its way may come to live.
void nxOrderExpiries::_Sweep(std::vector<unsigned int>& orders, long long time) const
{
    std::erase_if(orders, [&](unsigned int id) {
        const nxExchangeOrder* const order = _orders.Find(id);
        return order == nullptr || order->expires != time ||
               (!order->IsAlive() && order->status != nxOrderStatus_Pending);
    });
}
