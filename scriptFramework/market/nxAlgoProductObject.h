#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/records/nxGenericProductID.h"
#include "base/records/nxMarketDepth.h"
#include "base/records/nxPrice.h"
#include "base/values/nxMoney.h"
#include "base/values/nxPriceManipulator.h"
#include "scriptFramework/market/nxAlgoMarketDepthObject.h"
#include "scriptFramework/market/nxAlgoPositionObject.h"
#include "scriptFramework/market/nxAlgoPriceObject.h"
#include "scriptFramework/market/nxAlgoPriceTradeVolumesObject.h"
#include "scriptFramework/market/nxAlgoStateObject.h"

class nxAlgoEventWindowObject;
class nxAlgoOrderObject;
class nxAlgoTickDataCollectionObject;
class nxDateTime;
class nxStrategyDefinition;
class nxStrategyLeg;

// One tradable product as a script sees it. The host derives from it, overrides what it knows better
// (snapshots, state, own best prices, profit, factories) and hands its objects out by
// nxAlgoJobInterface::GetProduct; it must keep a product alive as long as the script can reach it. Everything
// overridable has a harmless default.
//
// Takes no lock: it is used on the thread that runs the script, and overrides guard what the host changes on
// other threads. Events do not pass through it: the host builds the event's object and calls the job.
class nxAlgoProductObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoProductObject";
    static const nxLuaWrapper<nxAlgoProductObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoProductObject>::PropertyType Properties[];

    // id: the product's number within the job, which every event of the product bears too.
    nxAlgoProductObject(nxAlgoJobInterface* job, const nxGenericProductID& productID, unsigned int id);
    // The copy shares the trade windows and collections: only one of the two may be destroyed while it has
    // any.
    nxAlgoProductObject(const nxAlgoProductObject&) = default;
    // Frees the trade windows, then the collections, then ends every subscription that is on.
    ~nxAlgoProductObject() override;

    const nxGenericProductID& GetGenericProductID() const { return _productID; }
    const nxPriceManipulator& GetPriceManipulator() const { return _priceManipulator; }

    void SetExchange(const std::string& exchange) { _exchange = exchange; }
    void SetName(const std::string& name) { _name = name; }
    void SetPointValue(const nxMoney& value) { _pointValue = value; }
    void SetPriceManipulator(const nxPriceManipulator& manipulator);
    void SetTickSize(const nxDecimal& tickSize);

    // Each ends the subscriptions it names that are on, whatever the host answers, and gives true.
    bool Unsubscribe();  // subscribe, subscribePrice and subscribeMarketDepth
    bool UnsubscribePositions();
    bool UnsubscribeState();
    bool UnsubscribePriceTradeVolumes();

    // How a trade window and a tick data collection attach themselves to the host's prices of this product.
    virtual void SubscribePrices(nxAlgoTickDataCollectionObject*) {}
    virtual void SubscribePrices(nxAlgoEventWindowObject*) {}
    virtual void UnsubscribePrices(nxAlgoTickDataCollectionObject*) {}
    virtual void UnsubscribePrices(nxAlgoEventWindowObject*) {}

    bool createOrder(nxLuaParameters&, nxLuaResults&);
    bool subscribe(nxLuaParameters&, nxLuaResults&);
    bool subscribePrice(nxLuaParameters&, nxLuaResults&);
    bool subscribeMarketDepth(nxLuaParameters&, nxLuaResults&);
    bool subscribePositions(nxLuaParameters&, nxLuaResults&);
    bool subscribeState(nxLuaParameters&, nxLuaResults&);
    bool createTradeWindow(nxLuaParameters&, nxLuaResults&);
    bool subscribePriceTradeVolumes(nxLuaParameters&, nxLuaResults&);
    bool setFlattenOnExit(nxLuaParameters&, nxLuaResults&);
    bool getLeg(nxLuaParameters&, nxLuaResults&);
    bool getLegPriceRatio(nxLuaParameters&, nxLuaResults&);
    bool getLegTradeRatio(nxLuaParameters&, nxLuaResults&);
    bool getLegSide(nxLuaParameters&, nxLuaResults&);
    bool createTickDataCollection(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults&);
    bool Get_price(nxLuaResults&);
    bool Get_depth(nxLuaResults&);
    bool Get_position(nxLuaResults&);
    bool Get_tickSize(nxLuaResults&);
    bool Get_state(nxLuaResults&);
    bool Get_name(nxLuaResults&);
    bool Get_pointValue(nxLuaResults&);
    bool Get_currency(nxLuaResults&);
    bool Get_priceTradeVolumes(nxLuaResults&);
    bool Get_ownBestBid(nxLuaResults&);
    bool Get_ownBestAsk(nxLuaResults&);
    bool Get_noLegs(nxLuaResults&);
    bool Get_totalPandL(nxLuaResults&);
    bool Get_dayPandL(nxLuaResults&);
    bool Get_priceOffset(nxLuaResults&);

protected:
    // The record comes as it was left by the last call.
    virtual void _GetPriceSnapshot(nxPrice&) const {}
    virtual void _GetDepthSnapshot(nxMarketDepth&) const {}
    virtual void _GetState(nxProductStateBitMask&) const {}  // comes clear
    virtual nxDecimal _GetOwnBestAsk() const { return nxDecimal::GetNullDecimal(); }
    virtual nxDecimal _GetOwnBestBid() const { return nxDecimal::GetNullDecimal(); }
    virtual double _GetDayPandL() const { return 0.0; }
    virtual double _GetTotalPandL() const { return 0.0; }
    // Null refuses. The host owns the order and keeps it as long as the script can reach it. The texts are of
    // createOrder's vocabulary, exec may be empty; which combinations make sense is for the host to judge.
    virtual nxAlgoOrderObject* _CreateOrder(const std::string& side, const std::string& type,
                                            const std::string& exec, const std::string& time,
                                            const std::string& spreadSpec, const std::string& spreadInstance);
    // Must not answer null once a script creates windows; the product owns the result.
    virtual nxAlgoEventWindowObject* _CreateEventWindow(double duration, double frequency);
    // The product owns the result.
    virtual nxAlgoTickDataCollectionObject* _CreateTickDataCollection(const std::string& period,
                                                                      unsigned int ticks,
                                                                      const nxDateTime& start,
                                                                      const nxDateTime& end);
    virtual void _SetFlattenOnExit(bool) {}
    virtual bool _IsStrategy() const { return false; }
    // Whether the host makes bars of that period beside those whose names every script knows.
    virtual bool _KnowsPeriod(const std::string&) const { return false; }

    unsigned char _GetDPForAverages() const
    {
        return static_cast<unsigned char>(_tickSize.GetDecimalPlaces() + 1);
    }
    unsigned int _GetID() const { return _id; }
    // Set by subscribing, whether or not the host agreed, and never cleared.
    bool _IsPriceWanted() const { return _priceWanted; }
    bool _IsDepthWanted() const { return _depthWanted; }
    nxAlgoPosition& _GetPosition() { return _position; }
    nxAlgoPriceTradeVolumesObject& _GetPriceTradeVolumes() { return _priceTradeVolumes; }
    // Frees the windows and collections of the product. For a host's destructor: they end their subscriptions
    // by operations that the host overrides.
    void _FreeOwned();

private:
    using HostCall = nxErrorEnum (nxAlgoJobInterface::*)(nxAlgoProductObject*);

    bool _SwitchOn(nxLuaResults& results, bool& subscribed, HostCall hostCall);
    void _SwitchOff(bool& subscribed, HostCall hostCall);
    // Reads the product's definition, if it is a strategy that has one, looked up anew for each call.
    void _WithStrategy(const std::function<void(nxStrategyDefinition&)>& read);
    // The same for one leg, counted from 1 by the script's one argument; false after a failure told in
    // results.
    bool _WithLeg(nxLuaParameters& parameters, nxLuaResults& results, const std::string& function,
                  const std::function<void(const nxStrategyLeg&)>& read);

    unsigned int _id;
    nxGenericProductID _productID;
    nxAlgoPosition _position;
    bool _subscribed = false;
    bool _priceSubscribed = false;
    bool _depthSubscribed = false;
    bool _stateSubscribed = false;
    bool _tradeVolumesSubscribed = false;
    bool _priceWanted = false;
    bool _depthWanted = false;
    std::string _exchange;
    nxMoney _pointValue;
    nxAlgoPriceTradeVolumesObject _priceTradeVolumes;
    bool _positionsSubscribed = false;
    // Both owned. Bare pointers, since a copy shares them.
    std::vector<nxAlgoEventWindowObject*> _tradeWindows;
    std::vector<nxAlgoTickDataCollectionObject*> _tickDataCollections;
    nxDecimal _tickSize;
    nxPriceManipulator _priceManipulator;
    nxAlgoPriceObject _priceObject;
    nxPrice _priceRecord;
    nxAlgoMarketDepthObject _depthObject;
    nxMarketDepth _depthRecord;
    nxAlgoPositionObject _positionObject;
    nxAlgoStateObject _stateObject;
    std::string _name;
};
