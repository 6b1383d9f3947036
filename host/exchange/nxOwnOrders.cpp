#include "host/exchange/nxOwnOrders.h"

#include <algorithm>

namespace {

void Erase(std::vector<nxExchangeOrder*>& orders, const nxExchangeOrder& order)
{
    const auto found = std::ranges::find(orders, &order);
    if (found != orders.end()) orders.erase(found);
}

}  // namespace

const nxOwnOrders::Level* nxOwnOrders::FindLevel(nxSide side, const nxDecimal& price) const
{
    const auto level = _levels[side].find(price);
    return level == _levels[side].end() ? nullptr : &level->second;
}

void nxOwnOrders::Remove(nxExchangeOrder& order)
{
    order.isResting = false;
    if (!order.triggered) return Erase(_stops, order);
    if (order.kind.isMarket) return Erase(_unlimited, order);
    Levels& levels = _levels[order.kind.side];
    const auto level = levels.find(order.terms.price);
    if (level == levels.end()) return;
    Erase(level->second.orders, order);
    if (level->second.orders.empty()) levels.erase(level);
}

nxDecimal nxOwnOrders::GetBestPrice(nxSide side, unsigned int owner) const
{
    for (const auto& [price, level] : _levels[side])
        for (const nxExchangeOrder* own : level.orders)
            if (own->kind.owner == owner) return price;
    return {};
}
