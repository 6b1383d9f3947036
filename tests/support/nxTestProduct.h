#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

// A product whose answers to the library are set by the test.
class nxTestProduct : public nxAlgoProductObject
{
public:
    nxTestProduct(nxAlgoJobInterface* job, const nxGenericProductID& productID, unsigned int id)
        : nxAlgoProductObject(job, productID, id)
    {
    }
    ~nxTestProduct() override { _FreeOwned(); }

    using nxAlgoProductObject::SubscribePrices;
    using nxAlgoProductObject::UnsubscribePrices;
    void SubscribePrices(nxAlgoEventWindowObject* subscriber) override
    {
        window = subscriber;
        windowCalls += '+';
    }
    void UnsubscribePrices(nxAlgoEventWindowObject*) override
    {
        window = nullptr;
        windowCalls += '-';
    }

    nxPrice price;
    nxMarketDepth depth;
    std::atomic<unsigned int> state = 0;
    nxDecimal ownBestBid;
    nxDecimal ownBestAsk;
    double dayPandL = 0.0;
    double totalPandL = 0.0;
    bool isStrategy = false;
    nxAlgoOrderObject* order = nullptr;  // what createOrder answers
    // Makes what createTickDataCollection answers; called with the request.
    std::function<nxAlgoTickDataCollectionObject*(const std::string& period, unsigned int ticks,
                                                  const nxDateTime& start, const nxDateTime& end)>
        makeCollection;
    std::string created;                        // the six texts of each createOrder, each ended by a bar
    nxAlgoEventWindowObject* window = nullptr;  // the latest that subscribed
    std::string windowCalls;                    // + for each that subscribed, - for each that went
    std::string flattened;                      // one letter for each call of setFlattenOnExit: t or f

    using nxAlgoProductObject::_GetDPForAverages;
    using nxAlgoProductObject::_GetPosition;
    using nxAlgoProductObject::_GetPriceTradeVolumes;
    using nxAlgoProductObject::_IsDepthWanted;
    using nxAlgoProductObject::_IsPriceWanted;

protected:
    void _GetPriceSnapshot(nxPrice& record) const override { record = price; }
    void _GetDepthSnapshot(nxMarketDepth& record) const override { record = depth; }
    void _GetState(nxProductStateBitMask& mask) const override { mask |= state.load(); }
    nxDecimal _GetOwnBestAsk() const override { return ownBestAsk; }
    nxDecimal _GetOwnBestBid() const override { return ownBestBid; }
    double _GetDayPandL() const override { return dayPandL; }
    double _GetTotalPandL() const override { return totalPandL; }
    nxAlgoOrderObject* _CreateOrder(const std::string& side, const std::string& type, const std::string& exec,
                                    const std::string& time, const std::string& spreadSpec,
                                    const std::string& spreadInstance) override
    {
        for (const std::string* text : {&side, &type, &exec, &time, &spreadSpec, &spreadInstance})
            created += *text + "|";
        return order;
    }
    nxAlgoTickDataCollectionObject* _CreateTickDataCollection(const std::string& period, unsigned int ticks,
                                                              const nxDateTime& start,
                                                              const nxDateTime& end) override
    {
        return makeCollection ? makeCollection(period, ticks, start, end) : nullptr;
    }
    nxAlgoEventWindowObject* _CreateEventWindow(double duration, double frequency) override
    {
        return new nxAlgoEventWindowObject(GetJob(), this, duration, frequency);
    }
    void _SetFlattenOnExit(bool flatten) override { flattened += flatten ? 't' : 'f'; }
    bool _IsStrategy() const override { return isStrategy; }
};
