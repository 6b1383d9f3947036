#include "host/exchange/nxOrderPool.h"

#include <cassert>
#include <utility>

nxExchangeOrder& nxOrderPool::Add()
{
    if (_free.empty()) _free.push_back(&_pool.emplace_back());
    nxExchangeOrder& order = *_free.back();
    _free.pop_back();
    _orders.push_back(&order);
    order = {};
    order.id = GetCount();
    return order;
}

void nxOrderPool::Release(unsigned int id)
{
    nxExchangeOrder*& order = _orders[id - _released - 1];
    assert(!order->IsAlive() && !order->isResting && order->status != nxOrderStatus_Pending);
    _free.push_back(std::exchange(order, nullptr));
    for (; !_orders.empty() && _orders.front() == nullptr; ++_released)
        _orders.pop_front();
}
