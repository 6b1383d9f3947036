#pragma once

#include <array>
#include <unordered_map>
#include <vector>

#include "host/accounts/nxProductAccount.h"
#include "host/market/nxMarket.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

class nxHostOrder;
class nxHostTickDataCollection;
class nxMarketJob;

// What a script can subscribe to.
enum class nxMarketEvent { Price, Depth, State, TradeVolumes, Position, TradeWindow, Count };

// A product of the reference host, one for each job that asked for it: the script's product over the replayed
// market. Owned by its job. The objects that its events hand to the script live as long as the product, so a
// script that keeps one reads what the market shows now.
class nxHostProduct : public nxAlgoProductObject
{
public:
    // The market outlives the product.
    nxHostProduct(nxAlgoJobInterface* job, const nxMarket& market, unsigned int id);
    // Ends its subscriptions while it is still a host's product, for the job to count.
    ~nxHostProduct() override;

    using nxAlgoProductObject::SubscribePrices;
    using nxAlgoProductObject::UnsubscribePrices;
    void SubscribePrices(nxAlgoTickDataCollectionObject* collection) override;
    void UnsubscribePrices(nxAlgoTickDataCollectionObject* collection) override;

    const nxMarketProduct& GetMarket() const { return _market.product; }
    unsigned int GetMarketIndex() const { return _market.index; }
    nxAlgoPriceObject& GetPriceEvent() { return _priceEvent; }
    nxAlgoMarketDepthObject& GetDepthEvent();
    nxAlgoStateObject& GetStateEvent();
    // The market's, which is also the rule by which prices of scripts are rounded.
    void TakeTickSize();

    nxMarketJob& GetOwner() const;
    // What the job's own fills came to.
    nxProductAccount& GetAccount() { return _account; }
    nxDecimal GetMark() const { return _account.GetMark(GetMarket().GetPrice()); }
    // Begins the job's account with nothing in it.
    void SetAccount(const nxProductAccount& account) { _account = account; }
    // Whether the job's position is to be closed when the job has ended, and the orders sent for that.
    bool FlattensOnExit() const { return _flattens; }
    std::vector<nxHostOrder*>& GetClosingOrders() { return _closingOrders; }
    // Shows the script its position: total and day are those of all jobs together.
    void ShowPosition(const nxProductAccount& everybody);

    // The volumes traded by price: what the market has at the time of the subscription, then each change.
    nxAlgoPriceTradeVolumesObject& GetTradeVolumesEvent() { return _GetPriceTradeVolumes(); }
    void UpdateTradeVolumes(const nxPriceTradeVolumes& update)
    {
        _GetPriceTradeVolumes().UpdatePriceTradeVolumes(update);
    }
    nxAlgoPositionObject& GetPositionEvent();

    // All that the script has made; they stay.
    const std::vector<nxHostTickDataCollection*>& GetCollections() const { return _collections; }

    void SubscribePrices(nxAlgoEventWindowObject* window) override;
    void UnsubscribePrices(nxAlgoEventWindowObject* window) override;
    // Shows the market's latest event, a trade, to the trade windows that are started. Their callbacks may
    // start and stop windows: one that starts meanwhile waits for the next trade.
    void ForwardTrade();

    // Which events the job is to get; counted, since two subscriptions can ask for the same.
    bool Wants(nxMarketEvent event) const { return _wanted[static_cast<std::size_t>(event)] > 0; }
    // True when the first subscription to the event begins.
    bool Want(nxMarketEvent event, int change)
    {
        int& wanted = _wanted[static_cast<std::size_t>(event)];
        wanted += change;
        return change > 0 && wanted == change;
    }

protected:
    bool _KnowsPeriod(const std::string& period) const override;
    bool _IsStrategy() const override { return GetMarket().IsStrategy(); }
    void _GetPriceSnapshot(nxPrice& price) const override { price = GetMarket().GetPrice(); }
    void _GetDepthSnapshot(nxMarketDepth& depth) const override { depth = GetMarket().GetDepth(); }
    void _GetState(nxProductStateBitMask& state) const override { state = GetMarket().GetState(); }
    nxDecimal _GetOwnBestAsk() const override { return _GetOwnBest(nxSide::Sell); }
    nxDecimal _GetOwnBestBid() const override { return _GetOwnBest(nxSide::Buy); }
    void _SetFlattenOnExit(bool flatten) override;
    double _GetDayPandL() const override;
    double _GetTotalPandL() const override;
    nxAlgoOrderObject* _CreateOrder(const std::string& side, const std::string& type, const std::string& exec,
                                    const std::string& time, const std::string& spreadSpec,
                                    const std::string& spreadInstance) override;
    nxAlgoTickDataCollectionObject* _CreateTickDataCollection(const std::string& period, unsigned int ticks,
                                                              const nxDateTime& start,
                                                              const nxDateTime& end) override;
    nxAlgoEventWindowObject* _CreateEventWindow(double duration, double frequency) override;

private:
    void _DropStoppedWindows();
    nxDecimal _GetOwnBest(nxSide side) const;

    const nxMarket& _market;
    nxProductAccount _account;
    bool _flattens = false;
    std::vector<nxHostOrder*> _closingOrders;
    nxAlgoPriceObject _priceEvent;
    nxAlgoMarketDepthObject _depthEvent;
    nxAlgoStateObject _stateEvent;
    nxAlgoPositionObject _positionEvent;
    std::array<int, static_cast<std::size_t>(nxMarketEvent::Count)> _wanted{};
    std::vector<nxHostTickDataCollection*> _collections;
    std::vector<nxAlgoEventWindowObject*> _windows;  // that are started, in that order; null: stopped since
    std::unordered_map<nxAlgoEventWindowObject*, std::size_t> _windowPlaces;  // of those that are not null
    bool _isForwarding = false;
};
