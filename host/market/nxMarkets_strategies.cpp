// Strategies: how their legs' markets make their quotes and states.

#include <algorithm>
#include <cassert>
#include <unordered_map>

#include "base/values/nxExactAmount.h"
#include "host/market/nxMarkets.h"
#include "host/market/nxStrategyOrder.h"
#include "scriptFramework/market/nxAlgoStateObject.h"

namespace {

// The change of a strategy's implied quote as a row would tell it.
nxFeedEvent GetEvent(const nxMarket& strategy, const nxPrice& update, long long time)
{
    const auto get = [](bool isSame, const nxDecimal& price) {
        return isSame ? nxDecimal(nxNoChangeInitalizer()) : price;
    };
    nxFeedEvent event;
    event.time = time;
    event.product = strategy.index;
    nxFeedQuote& quote = event.quote;
    quote.bid = get(update.GetImpliedBidPrice().IsNoChange() && update.GetImpliedBidVolume().IsNoChange(),
                    update.GetImpliedBidPrice());
    quote.ask = get(update.GetImpliedAskPrice().IsNoChange() && update.GetImpliedAskVolume().IsNoChange(),
                    update.GetImpliedAskPrice());
    quote.last.SetNoChange();
    quote.bidVolume.SetNoChange();
    quote.askVolume.SetNoChange();
    quote.lastVolume.SetNoChange();
    quote.side = nxEnum_NoChange;
    return event;
}

// Open while all legs are; as it was while nothing is known of one.
unsigned int GetStateOfLegs(const nxMarket& strategy)
{
    const auto hasState = [](unsigned int bits) {
        return [bits](const nxStrategyTerms::Leg& leg) { return leg.market->GetState() == bits; };
    };
    if (std::ranges::all_of(strategy.terms.legs, hasState(nxAlgoStateObject::Open)))
        return nxAlgoStateObject::Open;
    if (std::ranges::any_of(strategy.terms.legs, hasState(nxAlgoStateObject::Closed)))
        return nxAlgoStateObject::Closed;
    return strategy.product.GetState().GetValue();
}

}  // namespace

void nxMarkets::MakeStrategies(long long now)
{
    const nxStrategyOrder order(*_products);
    if (order.strategies.empty()) return;
    // The described products are the first of the source's, in their order.
    std::unordered_map<std::string_view, unsigned int> indexes;
    for (const nxProductDescription& product : *_products)
        indexes.emplace(product.name, static_cast<unsigned int>(indexes.size()));
    std::unordered_map<const nxMarket*, std::vector<nxMarket*>> below;  // legs at any depth
    for (const std::size_t i : order.strategies) {
        nxMarket& strategy = Get(static_cast<unsigned int>(i), now);
        strategy.product.SetStrategy();
        std::vector<nxMarket*>& legs = below[&strategy];
        for (const nxProductLegDescription& description : (*_products)[i].legs) {
            assert(indexes.contains(description.product));
            nxMarket& leg = Get(indexes.at(description.product), now);
            strategy.terms.legs.push_back({&leg.product, description.side, {}, 1, leg.ahead.get()});
            legs.push_back(&leg);
            const auto found = below.find(&leg);
            if (found != below.end()) legs.insert(legs.end(), found->second.begin(), found->second.end());
        }
        std::ranges::sort(legs);
        legs.erase(std::ranges::unique(legs).begin(), legs.end());
        for (nxMarket* leg : legs)
            leg->strategies.push_back(&strategy);
        _strategies.push_back(&strategy);
        _SetTerms(strategy);
        // Nobody has subscribed to it yet, so nobody is told.
        static_cast<void>(strategy.product.SetState(GetStateOfLegs(strategy)));
    }
}

void nxMarkets::_SetTerms(nxMarket& strategy)
{
    const nxProductDescription& description = (*_products)[strategy.index];
    strategy.terms.priceOffset = description.priceOffset;
    for (std::size_t i = 0; i < description.legs.size(); ++i) {
        strategy.terms.legs[i].priceRatio = description.legs[i].priceRatio;
        strategy.terms.legs[i].tradeRatio =
            static_cast<unsigned int>(description.legs[i].tradeRatio.GetMantissa());
    }
    _FollowTicks(strategy);
}

// A tick that is not described is the power of ten that holds what the legs' ticks come to.
void nxMarkets::_FollowTicks(nxMarket& strategy)
{
    const nxFeedProductTable& products = _source.GetProducts();
    const std::string& name = strategy.product.GetName();
    if (strategy.terms.priceOffset.IsValid()) _source.NotePrice(name, strategy.terms.priceOffset);
    for (const nxStrategyTerms::Leg& leg : strategy.terms.legs) {
        const nxExactAmount step(products.Find(leg.market->GetName())->GetTickSize(), 1, leg.priceRatio);
        _source.NotePrice(name, step.GetAsDecimal(nxDecimal::MaxDecimalPlaces));
    }
    _TakeTickSize(strategy, products.Find(name)->GetTickSize());
}

// In their order, so that each finds its legs priced.
void nxMarkets::_Price(const std::vector<nxMarket*>& strategies, long long now, bool ahead)
{
    for (nxMarket* strategy : strategies) {
        if (_observer.IsEnding()) return;
        nxMarketProduct& product = ahead ? *strategy->ahead : strategy->product;
        if (!product.ApplyImplied(nxImpliedQuote(strategy->terms, ahead))) continue;
        const nxFeedEvent event = GetEvent(*strategy, product.GetPriceUpdate(), now);
        if (ahead == _isAhead) strategy->isFresh = false;
        ahead ? _observer.OnImpliedQuoteAhead(*strategy, event) : _observer.OnImpliedQuote(*strategy, event);
    }
}

void nxMarkets::_FollowLegs(const nxMarket& leg)
{
    for (nxMarket* strategy : leg.strategies)
        SetState(*strategy, GetStateOfLegs(*strategy));
}

void nxMarkets::ChangeDescriptions(nxProductDescriptions products, long long now)
{
    _products = std::move(products);
    for (nxMarket* strategy : _strategies)
        _SetTerms(*strategy);
    if (_isAhead) _Price(_strategies, now, true);
    _Price(_strategies, now, false);
}
