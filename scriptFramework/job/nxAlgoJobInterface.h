#pragma once

#include <map>
#include <string>

#include "base/enums/nxCurrencyEnum.h"
#include "base/enums/nxErrorEnum.h"
#include "base/enums/nxLogLevelEnum.h"
#include "base/enums/nxSyntheticChildOrderTypeEnum.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxValueWrapper.h"

class nxAlgoDataSeriesObject;
class nxAlgoDataStoreObject;
class nxAlgoEventWindowObject;
class nxAlgoLibraryObject;
class nxAlgoOrderCollectionObject;
class nxAlgoOrderObject;
class nxAlgoPosition;
class nxAlgoProductObject;
class nxAlgoTickDataObject;
class nxAlgoVorantJobCollectionObject;
class nxMarketDepth;
class nxOrder;
class nxOrderTransaction;
class nxPrice;
class nxVorantParameter;

// What the host of a job implements: everything the library asks of the world outside. The host owns it and
// keeps it alive for longer than every object built with it, the nxAlgoJobObject above all.
//
// Calls arrive on the thread that runs the script, under the job's mutex; only the trade window timer and the
// tick notification may come from the host's own threads. From inside such a call the host must not enter the
// job again, except by StopJob after Shutdown. A std::exception thrown here becomes a Lua error with its
// text.
//
// nxErrorEnum 0 is success. A null pointer means that there is no such object; objects handed out stay the
// host's and must live as long as the script can reach them. The order of the operations is part of the
// contract; the reserved places keep it and are neither called nor given a meaning by this library.
class nxAlgoJobInterface
{
public:
    virtual nxAlgoVorantJobCollectionObject* GetVorantJobs() = 0;
    virtual nxAlgoOrderCollectionObject* GetOrders() = 0;     // all orders that the job can see
    virtual nxAlgoOrderCollectionObject* GetJobOrders() = 0;  // those of this job alone
    virtual nxAlgoProductObject* GetProduct(const std::string& productName) = 0;

    virtual nxErrorEnum SubscribePrices(nxAlgoProductObject*) = 0;  // the script function subscribe
    virtual nxErrorEnum UnsubscribePrices(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum SubscribePrice(nxAlgoProductObject*) = 0;  // the script function subscribePrice
    virtual nxErrorEnum UnsubscribePrice(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum SubscribeMarketDepth(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum UnsubscribeMarketDepth(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum SubscribePositions(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum UnsubscribePositions(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum SubscribeState(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum UnsubscribeState(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum SubscribePAndL(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum UnsubscribePAndL(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum SubscribePriceTradeVolumes(nxAlgoProductObject*) = 0;
    virtual nxErrorEnum UnsubscribePriceTradeVolumes(nxAlgoProductObject*) = 0;
    virtual void _Reserved01() {}
    virtual void _Reserved02() {}

    // A host's product makes its orders with this, behind its _CreateOrder.
    virtual nxAlgoOrderObject* CreateOrder(nxAlgoProductObject*, const std::string& side,
                                           const std::string& type, const std::string& exec,
                                           const std::string& time, const std::string& spreadSpec) = 0;
    virtual nxValueWrapper<unsigned int, -1, -2> GetID() = 0;

    virtual void SendUserState(const nxLogLevelEnum& level, const std::string& text) = 0;
    virtual void SendUserText1(const std::string& text) = 0;
    virtual void SendUserText2(const std::string& text) = 0;
    virtual void SendUserText3(const std::string& text) = 0;
    virtual bool SetParameter(const std::string& name, const std::string& value) = 0;
    // On false error says why.
    virtual bool SendUserLog(const std::map<std::string, std::string>& fields, std::string& error) = 0;
    virtual void LogText(const std::string& text) = 0;
    virtual void PublishParameter(const std::string& name, const std::string& value) = 0;
    // The host calls OnTimer(name) on the job at each interval, whose unit is the host's.
    virtual void StartTimer(const std::string& name, unsigned int interval) = 0;
    virtual void StopTimer(const std::string& name) = 0;
    virtual void SetTag(const std::string& tag) = 0;
    virtual std::string GetTag() = 0;
    virtual void SetOrderUserString(const std::string& text) = 0;
    virtual void _Reserved03() {}
    virtual void SetOrderUserString2(const std::string& text) = 0;
    virtual void _Reserved04() {}
    virtual void Shutdown() = 0;  // the script asks to end the job
    virtual std::string GetDynamicParameter(const std::string& tag, std::string name) = 0;
    virtual void AddEventReference() = 0;
    virtual void ReleaseEventReference() = 0;
    virtual bool HasEventReference() const = 0;
    virtual nxErrorEnum CheckOrderTransactionCount() = 0;
    virtual nxErrorEnum CanSubmitChildOrder(const nxOrder&, std::string& error) = 0;
    virtual nxErrorEnum CanAmendChildOrder(const nxOrder&, std::string& error) = 0;
    virtual bool IsActive() const = 0;
    // A private copy that the caller deletes, or null.
    virtual nxVorantParameter* GetParameter(const std::string& id) const = 0;

    // The selection that the job was launched with; asked for only while HasContext() answers true.
    virtual std::string GetSelectedProduct() = 0;
    virtual unsigned int GetSelectedVolume() const = 0;
    virtual double GetSelectedPrice() const = 0;
    virtual std::string GetSelectedSide() = 0;
    virtual std::string GetSelectedSpreadSpec() = 0;
    virtual void SetSelectedPrice(const double& price) = 0;

    virtual unsigned int GetTransactionCount() = 0;
    virtual nxAlgoOrderObject* GetOrder(unsigned int id) = 0;
    virtual void _Reserved05() {}
    virtual nxAlgoDataSeriesObject* CreateDataSeries() = 0;
    virtual nxAlgoDataStoreObject* GetDataStore(const std::string& name, bool create) = 0;
    virtual void SendParameter(const std::string& tag, const std::string& name, const std::string& value) = 0;
    virtual void SetEnableCrossProtection(bool enable) = 0;
    virtual void _Reserved06() {}
    virtual void SetShatterOnExit(bool enable) = 0;
    virtual void SetDisableParentFills(bool disable) = 0;
    virtual void StartEventWindowTimer(nxAlgoEventWindowObject*, double interval) = 0;
    virtual void StopEventWindowTimer(nxAlgoEventWindowObject*) = 0;

    // Five notifications for a host's own bookkeeping. The way of an event into the script does not lead
    // through them: for that the host calls the On... entries of nxAlgoJobObject.
    virtual void OnPrice(unsigned int /*id*/, const nxPrice& /*previous*/, const nxPrice& /*current*/) {}
    virtual void _Reserved07() {}
    virtual void _Reserved08() {}
    virtual void _Reserved09() {}
    virtual void _Reserved10() {}
    virtual void _Reserved11() {}
    virtual void OnMarketDepth(unsigned int /*id*/, const nxMarketDepth& /*previous*/,
                               const nxMarketDepth& /*current*/)
    {
    }
    virtual void _Reserved12() {}
    // A trade window has a result; the host passes it on to nxAlgoJobObject::OnEventWindow.
    virtual void OnEventWindow(nxAlgoEventWindowObject&) = 0;
    virtual void _Reserved13() {}
    // A real-time bar changed; the host passes it on to nxAlgoJobObject::OnTickData.
    virtual void OnTickData(nxAlgoTickDataObject&) = 0;
    virtual bool _Reserved14() { return false; }

    virtual const std::string& GetLogPrefix() const;                     // "BASE"
    virtual nxSyntheticChildOrderTypeEnum GetSyntheticChildOrderType();  // undefined
    virtual nxAlgoLibraryObject* LoadLibrary(const std::string& name) = 0;
    virtual void SetError(const std::string& text) = 0;
    virtual std::string GetError() = 0;  // told to the script when work or pull fails
    virtual void _Reserved15() {}
    virtual std::string GetAccount() = 0;
    virtual void OnPositionUpdate(unsigned int /*id*/, const nxAlgoPosition&) {}
    virtual void OnOrderUpdate(const nxAlgoOrderObject&, const nxOrderTransaction&) {}
    virtual void OnOrderFill(const nxAlgoOrderObject&, const nxOrderTransaction&) {}
    virtual double _Reserved16() { return 1.0; }
    virtual bool HasContext() = 0;
    virtual void _Reserved17() {}
    virtual void _Reserved18() {}
    virtual void _Reserved19() {}
    virtual void _Reserved20() {}
    virtual void _Reserved21() {}
    virtual void _Reserved22() {}
    virtual void _Reserved23() {}
    virtual void SetReference(const std::string& text) = 0;
    virtual void SetDisableReport(bool disable) = 0;
    virtual bool IsInOnInit() = 0;  // true while OnInit runs
    virtual void _Reserved24() {}
    virtual void SetEnablePandL(bool enable) = 0;
    virtual nxDecimal GetPandL(const nxCurrencyEnum& currency) = 0;
    virtual void _Reserved25() {}
    virtual bool SetChartLine(const std::string& chartID, const std::string& lineID, double value,
                              unsigned int colour) = 0;
    virtual bool RemoveChartLine(const std::string& chartID, const std::string& lineID) = 0;
    virtual ~nxAlgoJobInterface() = default;
    virtual void _Reserved26() {}
    virtual void _Reserved27() {}
    virtual void _Reserved28() {}
};
