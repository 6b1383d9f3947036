#include "host/market/nxMarkets.h"

#include <algorithm>

#include "scriptFramework/market/nxAlgoStateObject.h"

namespace {

unsigned int GetStateBits(bool isOpen)
{
    return isOpen ? nxAlgoStateObject::Open : nxAlgoStateObject::Closed;
}

}  // namespace

nxMarkets::nxMarkets(nxEventSource& source, nxProductDescriptions products, nxMarketObserver& observer,
                     bool isAhead)
    : _source(source), _products(std::move(products)), _observer(observer), _isAhead(isAhead)
{
}

void nxMarkets::_Make(unsigned int index, long long now)
{
    if (index >= _markets.size()) _markets.resize(index + 1);
    const nxFeedProduct& known = _source.GetProducts().Get(index);
    _markets[index] = std::make_unique<nxMarket>(index, known.GetName(), known.GetTickSize());
    nxMarket& market = *_markets[index];
    if (_isAhead) market.ahead = std::make_unique<nxMarketProduct>(known.GetName());
    if (index < _products->size()) {
        market.description = (*_products)[index];
    } else if (known.HasFoundLots()) {
        // Prices are of one unit, so a lot moves by its share of it.
        market.description.lotSize = market.description.pointValue = known.GetLotSize();
    }
    if (!market.GetHours().IsEmpty()) {
        market.nextState = market.GetHours().GetNextChange(now);
        _nextStateTime = std::min(_nextStateTime, market.nextState);
        // Nobody has subscribed to it yet, so nobody is told.
        static_cast<void>(market.product.SetState(GetStateBits(market.GetHours().IsOpen(now))));
    }
    _observer.OnMarketMade(market);
}

nxMarket* nxMarkets::Find(std::string_view name, long long now)
{
    const nxFeedProductTable& products = _source.GetProducts();
    for (unsigned int i = 0; i < products.GetCount(); ++i)
        if (products.Get(i).GetName() == name) return &Get(i, now);
    return nullptr;
}

nxMarket& nxMarkets::Meet(const nxFeedEvent& event)
{
    nxMarket& market = Get(event.product, event.time);
    const nxDecimal& tickSize = _source.GetProducts().Get(event.product).GetTickSize();
    if (tickSize != market.tickSize) _TakeTickSize(market, tickSize);
    if (market.OpensWithData()) SetState(market, nxAlgoStateObject::Open);
    market.isFresh = false;
    return market;
}

void nxMarkets::SetState(nxMarket& market, unsigned int bits)
{
    if (!market.product.SetState(bits)) return;
    market.isFresh = bits == nxAlgoStateObject::Open;
    _observer.OnMarketState(market);
    if (!market.product.IsStrategy()) _FollowLegs(market);
}

void nxMarkets::FollowHours(long long now)
{
    ForEach([&](nxMarket& market) {
        if (market.nextState > now || _observer.IsEnding()) return;
        market.nextState = market.GetHours().GetNextChange(now);
        const bool isOpen = market.GetHours().IsOpen(now);
        // Where a session begins as the one before it ends, the market closes and opens.
        if (isOpen && market.product.GetState() == nxAlgoStateObject::Open) {
            SetState(market, nxAlgoStateObject::Closed);
            if (_observer.IsEnding()) return;
        }
        SetState(market, GetStateBits(isOpen));
    });
    _nextStateTime = nxTime::Never;
    ForEach([&](const nxMarket& market) { _nextStateTime = std::min(_nextStateTime, market.nextState); });
}

void nxMarkets::_TakeTickSize(nxMarket& market, const nxDecimal& tickSize)
{
    market.terms.tickSize = tickSize;
    if (tickSize == market.tickSize) return;
    market.tickSize = tickSize;
    _observer.OnTickSize(market);
    if (market.product.IsStrategy()) return;
    for (nxMarket* strategy : market.strategies)
        _FollowTicks(*strategy);
}
