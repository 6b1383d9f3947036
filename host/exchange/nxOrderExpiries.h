#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "host/exchange/nxOrderPool.h"
#include "host/market/nxTradingHours.h"

// When orders end by themselves.
class nxOrderExpiries
{
public:
    // The orders outlive it.
    explicit nxOrderExpiries(const nxOrderPool& orders) : _orders(orders) {}

    // The end of an order's last day; nxTime::Never for one after the last of all times.
    static long long GetEnd(const nxDateTime& date);
    // When an order that arrives now ends by its time in force. Empty hours: a day ends at midnight UTC.
    static long long GetEnd(const nxExchangeOrder& order, const nxTradingHours& hours, long long now);
    // The end of the trading day in which a bar lies that ends at that time.
    static long long GetEndOfDay(long long barEnd, const nxTradingHours& hours);

    // By the order's `expires`.
    void Add(const nxExchangeOrder& order);
    // nxTime::Never where nothing ends.
    long long GetNextTime() const { return _byTime.empty() ? nxTime::Never : _byTime.begin()->first; }
    // Of the orders whose time is the next one, those that have not ended otherwise, by their numbers.
    std::vector<unsigned int> TakeNext();

private:
    // Also orders that are dead or have another date by now, which are swept out before the list grows to
    // twice what it was.
    struct Expiry
    {
        std::vector<unsigned int> orders;
        std::size_t sweepAt = 64;
    };

    void _Sweep(std::vector<unsigned int>& orders, long long time) const;

    const nxOrderPool& _orders;
    std::map<long long, Expiry> _byTime;
};
