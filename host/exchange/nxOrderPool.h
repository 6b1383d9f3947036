#pragma once

#include <deque>
#include <vector>

#include "host/exchange/nxExchangeOrder.h"

// The orders of an exchange by their numbers, which begin with 1. An order stays where it is until it is
// released; then its place serves another one, so that what is kept is what is alive.
class nxOrderPool
{
public:
    // A new order with the next number.
    nxExchangeOrder& Add();
    // Of one that is over and that nobody asks for any more.
    void Release(unsigned int id);
    // One that was not released.
    nxExchangeOrder& Get(unsigned int id) { return *_orders[id - _released - 1]; }
    const nxExchangeOrder& Get(unsigned int id) const { return *_orders[id - _released - 1]; }
    // Null for a released one.
    nxExchangeOrder* Find(unsigned int id) const
    {
        return id <= _released ? nullptr : _orders[id - _released - 1];
    }
    // With those that were released.
    unsigned int GetCount() const { return _released + static_cast<unsigned int>(_orders.size()); }

private:
    std::deque<nxExchangeOrder> _pool;    // they stay where they are
    std::vector<nxExchangeOrder*> _free;  // of the pool
    // By number; null for a released one. Those in front of the first that is not are gone.
    std::deque<nxExchangeOrder*> _orders;
    unsigned int _released = 0;  // that are gone from the front
};
