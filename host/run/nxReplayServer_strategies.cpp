// Strategies: how their legs' markets make their quotes and states, and what changes when the file that
// describes them does.

#include <algorithm>
#include <cassert>
#include <unordered_map>

#include "base/values/nxExactAmount.h"
#include "host/market/nxProductFile.h"
#include "host/market/nxProductUpdate.h"
#include "host/market/nxStrategyOrder.h"
#include "host/run/nxReplayServer.h"

namespace {

// The change of a strategy's implied quote as its exchange is told of it.
nxFeedEvent GetEvent(const nxPrice& update, long long time)
{
    const auto get = [](bool isSame, const nxDecimal& price) {
        return isSame ? nxDecimal(nxNoChangeInitalizer()) : price;
    };
    nxFeedEvent event;
    event.time = time;
    nxFeedQuote& quote = event.quote;
    quote.bid = get(update.GetImpliedBidPrice().IsNoChange() && update.GetImpliedBidVolume().IsNoChange(),
                    update.GetImpliedBidPrice());
    quote.ask = get(update.GetImpliedAskPrice().IsNoChange() && update.GetImpliedAskVolume().IsNoChange(),
                    update.GetImpliedAskPrice());
    quote.last.SetNoChange();
    quote.bidVolume.SetNoChange();
    quote.askVolume.SetNoChange();
    quote.lastVolume.SetNoChange();
    quote.side.SetNoChange();
    return event;
}

}  // namespace

// Once the jobs are there, before their scripts are.
void nxReplayServer::_MakeStrategies()
{
    _definitions.SetProducts(_options.products);
    if (_options.watchProducts) _watch.emplace(_options.productFile, _options.watchInterval);
    // The described products are the first of the feed's, in their order.
    std::unordered_map<std::string_view, unsigned int> indexes;
    for (const nxProductDescription& product : _options.products)
        indexes.emplace(product.name, static_cast<unsigned int>(indexes.size()));
    std::unordered_map<const Market*, std::vector<Market*>> below;  // legs at any depth
    for (const std::size_t i : nxStrategyOrder(_options.products).strategies) {
        Market& strategy = _GetMarket(static_cast<unsigned int>(i));
        strategy.product.SetStrategy();
        std::vector<Market*>& markets = below[&strategy];
        for (const nxProductLegDescription& description : _options.products[i].legs) {
            assert(indexes.contains(description.product));
            Market& leg = _GetMarket(indexes.at(description.product));
            strategy.terms.legs.push_back(
                {&leg.product, description.side == nxBuySell_Buy ? nxSide::Buy : nxSide::Sell, {}, 1});
            markets.push_back(&leg);
            const auto found = below.find(&leg);
            if (found != below.end())
                markets.insert(markets.end(), found->second.begin(), found->second.end());
        }
        std::ranges::sort(markets);
        markets.erase(std::ranges::unique(markets).begin(), markets.end());
        for (Market* leg : markets)
            leg->strategies.push_back(&strategy);
        _strategies.push_back(&strategy);
        _SetTerms(strategy, _options.products[i]);
        // Nobody has subscribed to it yet, so nobody is told.
        static_cast<void>(strategy.product.SetState(_GetStateOfLegs(strategy)));
    }
}

void nxReplayServer::_SetTerms(Market& strategy, const nxProductDescription& description)
{
    strategy.terms.priceOffset = description.priceOffset;
    for (std::size_t i = 0; i < description.legs.size(); ++i) {
        strategy.terms.legs[i].priceRatio = description.legs[i].priceRatio;
        strategy.terms.legs[i].tradeRatio =
            static_cast<unsigned int>(description.legs[i].tradeRatio.GetMantissa());
    }
    _FollowTicks(strategy);
}

// A tick that is not described is the power of ten that holds what the legs' ticks come to.
void nxReplayServer::_FollowTicks(Market& strategy)
{
    const nxFeedProductTable& products = _feed.GetProducts();
    const std::string& name = strategy.product.GetName();
    if (strategy.terms.priceOffset.IsValid()) _feed.NotePrice(name, strategy.terms.priceOffset);
    for (const nxStrategyTerms::Leg& leg : strategy.terms.legs) {
        const nxExactAmount step(products.Find(leg.market->GetName())->GetTickSize(), 1, leg.priceRatio);
        _feed.NotePrice(name, step.GetAsDecimal(nxDecimal::MaxDecimalPlaces));
    }
    _TakeTickSize(strategy, products.Find(name)->GetTickSize());
}

void nxReplayServer::_TakeTickSize(Market& market, const nxDecimal& tickSize)
{
    market.terms.tickSize = tickSize;
    if (tickSize == market.tickSize) return;
    market.tickSize = tickSize;
    // Of every job that has asked for the product, subscribed to or not.
    for (const auto& runner : _runners) {
        const auto& products = runner->GetJob().GetProducts();
        const auto product = products.find(market.product.GetName());
        if (product != products.end()) product->second->Describe(tickSize);
    }
    if (_exchange) _exchange->SetTickSize(market.exchangeProduct, tickSize);
    if (market.product.IsStrategy()) return;
    for (Market* strategy : market.strategies)
        _FollowTicks(*strategy);
}

// In their order, so that each finds its legs priced.
void nxReplayServer::_PriceStrategies(const std::vector<Market*>& strategies)
{
    for (Market* strategy : strategies) {
        if (_IsEnding()) return;
        if (!strategy->product.ApplyImplied(nxImpliedQuote(strategy->terms))) continue;
        ++_statistics.impliedQuotes;
        strategy->isFresh = false;
        if (_exchange) _TellExchange(*strategy, GetEvent(strategy->product.GetPriceUpdate(), _time.Get()));
        _DeliverPrice(*strategy);
    }
}

// Open while all legs are; as it was while nothing is known of one.
unsigned int nxReplayServer::_GetStateOfLegs(const Market& strategy)
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

void nxReplayServer::_FollowLegs(const Market& leg)
{
    for (Market* strategy : leg.strategies)
        _SetState(*strategy, _GetStateOfLegs(*strategy));
}

// Of a watched product file: what changed in it holds from now on.
void nxReplayServer::_FollowProducts()
{
    if (!_watch->HasChanged()) return;
    const std::string& path = _watch->GetPath();
    std::vector<nxProductDescription> products;
    nxFeedError error;
    if (!nxProductFile::Read(path, products, error)) {
        _Log(error.GetText() + "; the products stay as they were");
        return;
    }
    const nxProductUpdate update(_options.products, products);
    if (update.refusal) {
        _Log(path + ": " + *update.refusal + "; the products stay as they were");
        return;
    }
    for (const std::string& change : update.changes)
        _Log(path + ": " + change);
    if (update.changes.empty()) return;
    _options.products = update.products;
    _definitions.SetProducts(_options.products);
    for (Market* strategy : _strategies)
        _SetTerms(*strategy, *std::ranges::find(_options.products, strategy->product.GetName(),
                                                &nxProductDescription::name));
    _PriceStrategies(_strategies);
}
