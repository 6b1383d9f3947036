#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxTickDataPeriodEnum.h"
#include "base/memory/nxLazyArray.h"
#include "base/records/nxTickData.h"
#include "base/threads/nxMutex.h"
#include "indicators/nxIndicatorBar.h"
#include "scriptFramework/analytics/nxAlgoIndicatorObject.h"
#include "scriptFramework/analytics/nxAlgoTickDataObject.h"
#include "scriptFramework/lua/nxScriptCharge.h"

class nxAlgoProductObject;
class nxGenericProductID;

// The history of a product in bars of one period, perhaps with a bar under construction, and the indicators
// over it. The host derives from it, fills it and decides when a bar is complete; the product owns it, and it
// owns its bars and indicators. It never trims: it grows as long as the host adds bars. A bar costs 48
// bytes, and some 80 more once a script has asked for it; the address of its object stays.
//
// The mutex guards the completed bars and the raw arrays, so that the host may add bars on a thread of its
// own while a script reads count and get. Indicators and the bar under construction have no lock.
class nxAlgoTickDataCollectionObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoTickDataCollectionObject";
    static const nxLuaWrapper<nxAlgoTickDataCollectionObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoTickDataCollectionObject>::PropertyType Properties[];

    // tickCount is what the script asked for; no logic here reads it.
    nxAlgoTickDataCollectionObject(nxAlgoJobInterface* job, nxAlgoProductObject* product,
                                   const std::string& period, const nxTickDataPeriodEnum& periodEnum,
                                   unsigned int tickCount);
    ~nxAlgoTickDataCollectionObject() override;
    nxAlgoTickDataCollectionObject(const nxAlgoTickDataCollectionObject&) = delete;
    nxAlgoTickDataCollectionObject& operator=(const nxAlgoTickDataCollectionObject&) = delete;

    // Appends a completed bar, which takes the place of the one under construction. `recalculate` brings the
    // indicators up to it; without it their next calculation does. The result is the collection's.
    nxAlgoTickDataObject* AddTickData(const nxTickData& tick, bool recalculate);
    // Folds one trade into the bar under construction, whose time stays null, and tells the host by its
    // OnTickData, also where the script did not ask for real time. A marked volume counts 0.
    void OnTick(const nxDecimal& price, const nxVolume& volume, const nxDateTime& time,
                const nxBuySellEnum& buySell);
    // Makes a copy of a ready record the bar under construction, without a notification.
    void SetRealTimeTickData(const nxTickData& tick);

    // Charges what it holds to the script from now on. False, with an error, when that is beyond the limit.
    [[nodiscard]] bool SetAccount(nxLuaResults& results);

    void SetEnableRealTime(bool enable) { _enableRealTime = enable; }
    const nxTickDataPeriodEnum& GetPeriod() const { return _periodEnum; }
    const std::string& GetPeriodName() const { return _period; }
    const nxGenericProductID& GetProductID() const;

    bool subscribe(nxLuaParameters&, nxLuaResults&);
    bool get(nxLuaParameters&, nxLuaResults&);
    bool createIndicator(nxLuaParameters&, nxLuaResults&);
    bool getIndicator(nxLuaParameters&, nxLuaResults&);

    bool Get_count(nxLuaResults&);
    bool Get_period(nxLuaResults&);
    bool Get_product(nxLuaResults&);
    bool Get_realTime(nxLuaResults&);

protected:
    // AddTickData for a host that has no use for the object, which is made when a script asks for it. Answers
    // the bar's place; the oldest has 0.
    std::size_t _AddBar(const nxTickData& tick, bool recalculate);
    // A new indicator, already calculated over the bars there are; the collection owns it. Null refuses, with
    // a reason for the script in `error`. The parameters hold "name" and "type", too.
    virtual nxAlgoIndicatorObject* _createIndicator(const std::string& type,
                                                    const std::map<std::string, std::string>& parameters,
                                                    std::string& error);
    // Begins to keep the collection fresh. False is a script error without a text.
    virtual bool _Subscribe(bool realTime);

    bool _HaveRealTime() const { return _enableRealTime && _realTimeTick != nullptr; }
    // Writes the bar under construction, not the argument, to the end of the raw arrays.
    void _SetRealTimeRawData(const nxTickData& tick);
    nxAlgoProductObject* _GetProduct() const { return _product; }
    unsigned int _GetRequestedTicks() const { return _tickCount; }
    std::size_t _GetCompletedTicks() const { return _times.size(); }
    // Calculates an indicator over the completed bars, and over the one under construction if there is one.
    void _Calculate(nxAlgoIndicatorObject& indicator);

private:
    using NamedIndicator = std::pair<std::string, std::unique_ptr<nxAlgoIndicatorObject>>;

    // Where it is, or would be.
    std::vector<NamedIndicator>::iterator _FindPlace(const std::string& name);
    bool _Has(const std::string& name)
    {
        const auto place = _FindPlace(name);
        return place != _indicators.end() && place->first == name;
    }
    // The raw series in the order in which indicators take them; an entry's place is that of its bar. As long
    // as there are bars, or longer by the one under construction.
    void _AppendRaw(const nxIndicatorBar& bar);
    void _MakeRoom();
    void _ReplaceRaw(const nxIndicatorBar& bar);
    void _CalculateRealTime();
    // Of the bars that are charged, and the lines of the indicators.
    std::size_t _GetBytes() const;
    nxAlgoTickDataObject& _GetTick(std::size_t place);

    std::vector<double> _closeValues, _openValues, _highValues, _lowValues, _volumeValues;
    std::vector<nxDateTime> _times;            // of the completed bars
    nxLazyArray<nxAlgoTickDataObject> _ticks;  // those of them that somebody asked for
    std::size_t _chargedBars = 0;              // of which there are as many or fewer
    nxScriptCharge _charge;                    // guarded by _mutex once bars come
    nxAlgoProductObject* _product;
    nxMutex _mutex;
    std::string _period;
    nxTickDataPeriodEnum _periodEnum;
    unsigned int _tickCount;
    std::vector<NamedIndicator> _indicators;  // in the order of their names
    std::unique_ptr<nxTickData> _realTimeTick;
    bool _enableRealTime = false;
    nxAlgoTickDataObject _realTimeObject;
};
