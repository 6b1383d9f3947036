#pragma once

#include "base/records/nxPrice.h"
#include "base/time/nxTimerCallback.h"
#include "scriptFramework/analytics/nxTimeSeries_Trade.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxAlgoProductObject;

// A product's trades over a rolling duration, from product:createTradeWindow, and the statistics over them as
// they were at the latest OnTradeWindowEvent. Without a frequency there is an event for each trade that
// changes something, with one above 0 an event for each tick of the host's timer.
//
// Owned by its product, which must outlive it. Trades and ticks may come on any thread; what is published
// is written there and read by the script in its callback, under the job's mutex.
class nxAlgoEventWindowObject : public nxTimerCallback, public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoEventWindowObject";
    static const nxLuaWrapper<nxAlgoEventWindowObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoEventWindowObject>::PropertyType Properties[];

    // duration: in seconds. frequency: what the host's timer is started with; 0 for an event on each trade,
    // and below 0 for none at all.
    nxAlgoEventWindowObject(nxAlgoJobInterface* job, nxAlgoProductObject* product, double duration,
                            double frequency);
    // Ends timer and subscription.
    ~nxAlgoEventWindowObject() override;

    // Where its trades are charged from now on.
    void SetAccount(const std::shared_ptr<nxScriptAccount>& account) { _series.SetAccount(account); }

    // A price event of the product. What bears no trade with its volume is ignored.
    void OnPrice(const nxPrice& price);
    void OnTimer() override { _CalculateAndPublish(true); }

    bool start(nxLuaParameters&, nxLuaResults&);
    bool stop(nxLuaParameters&, nxLuaResults&);
    bool enableRegression(nxLuaParameters&, nxLuaResults&);

    // The object's address: an identity for comparing windows, without another meaning.
    bool Get_id(nxLuaResults&);
    bool Get_min(nxLuaResults&);
    bool Get_max(nxLuaResults&);
    bool Get_averagePrice(nxLuaResults&);
    bool Get_vwap(nxLuaResults&);
    bool Get_range(nxLuaResults&);
    bool Get_totaltraded(nxLuaResults&);
    bool Get_stddev(nxLuaResults&);
    bool Get_change(nxLuaResults&);
    bool Get_averageVolume(nxLuaResults&);
    bool Get_first(nxLuaResults&);
    bool Get_last(nxLuaResults&);
    bool Get_size(nxLuaResults&);
    bool Get_slope(nxLuaResults&);

private:
    void _CalculateAndPublish(bool force);

    nxAlgoProductObject* _product;
    nxDecimal _min, _max, _averagePrice, _vwap, _range, _stddev, _change;
    nxVolume _totaltraded;
    nxDecimal _averageVolume, _first, _last, _slope;
    unsigned int _size = 0;
    bool _subscribed = false;
    nxTimeSeries_Trade _series;
    double _frequency;
    bool _started = false;
    bool _regressionEnabled = false;
};
