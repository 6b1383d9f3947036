#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "host/feed/nxEventSource.h"
#include "host/market/nxMarket.h"
#include "host/market/nxMarketObserver.h"

// The markets of a run by their index in the source's table of products: what opens and closes them, the tick
// sizes that their data come to, and the quotes that the legs of strategies imply. A market is made when it
// is first met. Used on the run's thread; now is the recorded time, in nanoseconds since 1970.
class nxMarkets
{
public:
    // The first of the source's table are the described products, in their order. Source and observer outlive
    // the markets. isAhead: the venue has rows before the scripts, and so markets of its own.
    nxMarkets(nxEventSource& source, nxProductDescriptions products, nxMarketObserver& observer,
              bool isAhead = false);

    nxMarket& Get(unsigned int index, long long now)
    {
        if (index >= _markets.size() || _markets[index] == nullptr) [[unlikely]]
            _Make(index, now);
        return *_markets[index];
    }
    // One that was met.
    nxMarket& Get(unsigned int index) { return *_markets[index]; }
    // Null when neither the data nor a description knows the name.
    nxMarket* Find(std::string_view name, long long now);
    // Those that were met. visit(market) may make others known, which are visited too.
    template <class Visit>
    void ForEach(Visit visit)
    {
        for (std::size_t i = 0; i < _markets.size(); ++i)
            if (_markets[i] != nullptr) visit(*_markets[i]);
    }

    // The market of an event that is about to be applied: with the tick size that its rows have come to, and
    // open where the data open it.
    nxMarket& Meet(const nxFeedEvent& event);
    void SetState(nxMarket& market, unsigned int bits);
    // When trading hours change a state next.
    long long GetNextStateTime() const { return _nextStateTime; }
    // Opens and closes the markets whose hours say so now, and finds out when they do next.
    void FollowHours(long long now);

    // Once, before anything is subscribed to.
    void MakeStrategies(long long now);
    // Those over the market, after an event of it. Each finds its legs priced.
    void PriceStrategies(const nxMarket& leg, long long now) { _Price(leg.strategies, now, false); }
    // The same at a venue that is ahead.
    void PriceStrategiesAhead(const nxMarket& leg, long long now) { _Price(leg.strategies, now, true); }
    // The descriptions as they stand now, and another version of them: the same products in the same order.
    const nxProductDescriptions& GetDescriptions() const { return _products; }
    void ChangeDescriptions(nxProductDescriptions products, long long now);

private:
    void _Make(unsigned int index, long long now);
    void _TakeTickSize(nxMarket& market, const nxDecimal& tickSize);
    void _SetTerms(nxMarket& strategy);
    void _FollowTicks(nxMarket& strategy);
    void _FollowLegs(const nxMarket& leg);
    void _Price(const std::vector<nxMarket*>& strategies, long long now, bool ahead);

    nxEventSource& _source;
    nxProductDescriptions _products;
    nxMarketObserver& _observer;
    const bool _isAhead;
    std::vector<std::unique_ptr<nxMarket>> _markets;  // null until the product is met
    std::vector<nxMarket*> _strategies;               // each after its legs
    long long _nextStateTime = nxTime::Never;
};
