#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/enums/nxBuySellEnum.h"
#include "base/enums/nxOrderStatusEnum.h"
#include "base/threads/nxMutexGuard.h"
#include "base/values/nxDecimal.h"
#include "base/values/nxSharedText.h"
#include "base/values/nxValueWrapper.h"
#include "scriptFramework/analytics/nxAlgoTimeStamp.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"
#include "scriptFramework/orders/nxAlgoOrderStateObject.h"

class nxAlgoOrderParameters;
class nxAlgoProductObject;
class nxGenericProductID;
class nxOrderTransaction;

// An order as a script sees it. The host derives from it, keeps the order's real state and answers through
// the virtual operations; everything overridable has a harmless default. The host owns its orders and keeps
// them as long as a script can reach them.
//
// Scripts read and work an order on their own thread. _orderMutex is held over the calls into the host,
// except where an operation says that it is called without a lock and guards itself; a host that changes an
// order on another thread does it under that mutex too. The last fill has a mutex of its own, so that a fill
// never waits for a _WorkOrder that is under way.
class nxAlgoOrderObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoOrderObject";
    static const nxLuaWrapper<nxAlgoOrderObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoOrderObject>::PropertyType Properties[];

    // SetProduct must follow before a script has the order.
    explicit nxAlgoOrderObject(nxAlgoJobInterface* job);
    // The product is not owned and outlives the order.
    nxAlgoOrderObject(nxAlgoJobInterface* job, nxAlgoProductObject* product);

    // The order's state as scripts read it; GetAveragePrice and IsCurrentJob are called without a lock.
    virtual unsigned int GetID() const { return 0; }
    virtual nxDecimal GetPrice() { return nxDecimal::GetNullDecimal(); }
    virtual unsigned int GetVolume() { return 0; }
    virtual unsigned int GetWorking() { return 0; }
    virtual unsigned int GetExecuted() { return 0; }
    virtual unsigned int GetHedgeCount() { return 0; }
    // From where the index counts is the host's.
    virtual nxVolume GetHedgeID(unsigned int /*index*/) { return {}; }
    virtual std::string GetType() { return {}; }
    virtual std::string GetExec() { return {}; }
    virtual std::string GetTime() { return {}; }
    virtual std::string GetSpreadSpec() { return {}; }
    virtual nxDecimal GetStopPrice() { return nxDecimal::GetNullDecimal(); }
    virtual nxVolume GetZephrinID() { return {}; }
    virtual std::string GetExchangeID() { return {}; }
    virtual nxVolume GetIcebergMinPeakSize() { return {}; }
    virtual nxVolume GetIcebergMaxPeakSize() { return {}; }
    virtual nxVolume GetIcebergThreshold() { return {}; }
    virtual nxVolume GetBracketProfit() { return {}; }
    virtual nxVolume GetBracketStopLoss() { return {}; }
    virtual std::string GetBracketStopLossType() { return {}; }
    virtual nxVolume GetBracketStopLossLimit() { return {}; }
    virtual bool GetBracketStopLossTrailing() { return true; }  // unlike the other booleans
    virtual nxVolume GetBracketStopLossVolume() { return {}; }
    virtual nxDecimal GetAveragePrice() { return nxDecimal::GetNullDecimal(); }
    virtual bool IsCurrentJob() { return true; }
    virtual nxVolume GetOriginatingZephrinID() { return {}; }
    virtual unsigned int GetOrderQPos() { return 0; }
    virtual bool GetPaidUp() { return false; }

    void SetProduct(nxAlgoProductObject* product);
    // Before the order is handed out: a script reads the side without a lock, too.
    void SetExchange(const std::string& exchange) { _GetRest().exchange = exchange; }
    void SetSide(const std::string& side) { _side = side; }  // "BUY" or "SELL"
    const std::string& GetSide() const { return _side.Get(); }
    // The script's own label. For the thread that runs the script.
    const std::string& GetReference() const { return _reference.Get(); }
    void SetReference(const std::string& reference);
    void SetShowOrder(bool show);
    // False, and value left alone, for an order that was created without the flag.
    bool GetShowOrder(bool& value) const;

    // Filled, deleted, rejected or expired.
    bool IsOver();

    bool work(nxLuaParameters&, nxLuaResults&);
    bool pull(nxLuaParameters&, nxLuaResults&);
    bool getHedgeID(nxLuaParameters&, nxLuaResults&);

    bool Get_id(nxLuaResults& r) { return _Locked<&Order::GetID>(r); }
    bool Get_product(nxLuaResults&);
    bool Get_price(nxLuaResults& r) { return _Locked<&Order::GetPrice>(r); }
    bool Get_side(nxLuaResults& r) { return _Locked<&Order::GetSide>(r); }
    bool Get_hedgeCount(nxLuaResults& r) { return _Locked<&Order::GetHedgeCount>(r); }
    bool Get_volume(nxLuaResults& r) { return _Locked<&Order::GetVolume>(r); }
    bool Get_working(nxLuaResults& r) { return _Locked<&Order::GetWorking>(r); }
    bool Get_executed(nxLuaResults& r) { return _Locked<&Order::GetExecuted>(r); }
    bool Get_type(nxLuaResults& r) { return _Locked<&Order::GetType>(r); }
    bool Get_exec(nxLuaResults& r) { return _Locked<&Order::GetExec>(r); }
    bool Get_time(nxLuaResults& r) { return _Locked<&Order::GetTime>(r); }
    bool Get_spreadSpec(nxLuaResults& r) { return _Locked<&Order::GetSpreadSpec>(r); }
    bool Get_stopPrice(nxLuaResults& r) { return _Locked<&Order::GetStopPrice>(r); }
    bool Get_zephrinID(nxLuaResults& r) { return _Locked<&Order::GetZephrinID>(r); }
    bool Get_exchangeID(nxLuaResults& r) { return _Locked<&Order::GetExchangeID>(r); }
    bool Get_state(nxLuaResults&);
    bool Get_icebergMinPeakSize(nxLuaResults& r) { return _Locked<&Order::GetIcebergMinPeakSize>(r); }
    bool Get_icebergMaxPeakSize(nxLuaResults& r) { return _Locked<&Order::GetIcebergMaxPeakSize>(r); }
    bool Get_icebergThreshold(nxLuaResults& r) { return _Locked<&Order::GetIcebergThreshold>(r); }
    bool Get_bracketProfit(nxLuaResults& r) { return _Locked<&Order::GetBracketProfit>(r); }
    bool Get_bracketStopLoss(nxLuaResults& r) { return _Locked<&Order::GetBracketStopLoss>(r); }
    bool Get_bracketStopLossType(nxLuaResults& r) { return _Locked<&Order::GetBracketStopLossType>(r); }
    bool Get_bracketStopLossLimit(nxLuaResults& r) { return _Locked<&Order::GetBracketStopLossLimit>(r); }
    bool Get_bracketStopLossTrailing(nxLuaResults& r)
    {
        return _Locked<&Order::GetBracketStopLossTrailing>(r);
    }
    bool Get_bracketStopLossVolume(nxLuaResults& r) { return _Locked<&Order::GetBracketStopLossVolume>(r); }
    bool Get_isSpreadHedge(nxLuaResults& r) { return _Unlocked<&Order::_IsSpreadHedgeChild>(r); }
    bool Get_isSpreadWorking(nxLuaResults& r) { return _Unlocked<&Order::_IsSpreadWorkingChild>(r); }
    bool Get_isCurrentJob(nxLuaResults& r) { return _Unlocked<&Order::IsCurrentJob>(r); }
    bool Get_parent(nxLuaResults&);
    bool Get_averagePrice(nxLuaResults& r) { return _Unlocked<&Order::GetAveragePrice>(r); }
    bool Get_lastFillPrice(nxLuaResults& r) { return _LastFill<&Order::_lastFillPrice>(r); }
    bool Get_lastFillVolume(nxLuaResults& r) { return _LastFill<&Order::_lastFillVolume>(r); }
    bool Get_spreadWorkingOrder(nxLuaResults&);
    bool Get_account(nxLuaResults& r) { return _Locked<&Order::_GetAccount>(r); }
    bool Get_lastVorantUpdateTime(nxLuaResults&);
    bool Get_lastExchangeFillTime(nxLuaResults&);
    bool Get_originatingZephrinID(nxLuaResults& r) { return _Locked<&Order::GetOriginatingZephrinID>(r); }
    bool Get_qposition(nxLuaResults& r) { return _Locked<&Order::GetOrderQPos>(r); }
    bool Get_paidUp(nxLuaResults& r) { return _Locked<&Order::GetPaidUp>(r); }
    bool Get_reference(nxLuaResults& r) { return _Locked<&Order::GetReference>(r); }
    bool Set_reference(const nxLuaParameter&);

protected:
    // False tells the script that the host refuses, with the text of nxAlgoJobInterface::GetError.
    virtual bool _WorkOrder(const nxAlgoOrderParameters&) { return true; }
    // algoID is null when the script gave none.
    virtual bool _PullOrder(const nxVolume& /*algoID*/) { return true; }
    // These are called without a lock. The status comes undefined.
    virtual void _GetOrderStatus(nxOrderStatusEnum&) {}
    virtual bool _IsPendingAmend() const { return false; }
    virtual bool _IsPendingCancel() const { return false; }
    virtual bool _IsSpreadHedgeChild() { return false; }
    virtual bool _IsSpreadWorkingChild() { return false; }
    virtual nxAlgoOrderObject* _GetParent() { return nullptr; }
    virtual nxAlgoOrderObject* _GetWorkingSpreadOrder() { return nullptr; }
    virtual std::string _GetAccount() { return {}; }  // under _orderMutex
    // Left alone as long as there is no such time.
    virtual void _SetLastExchangeFillTime(nxAlgoTimeStamp&) {}
    virtual void _SetLastVorantUpdateTime(nxAlgoTimeStamp&) {}
    // The record of the latest event, for an update that was made without one; good until the next call.
    virtual const nxOrderTransaction* _GetLastTransaction() const { return nullptr; }
    // The times of that event, for an update that was made without any: when the host learned of it, and when
    // the exchange filled, which is left alone for an event that is no fill.
    virtual void _GetLastTimes(nxTimeStamp& /*update*/, nxDateTime& /*fill*/) const {}

    // Undefined for a side that is neither "BUY" nor "SELL".
    nxBuySellEnum GetBuySellEnum() const;
    // From any thread.
    void _SetLastFill(const nxDecimal& price, const nxVolume& volume);
    nxAlgoProductObject* _GetProduct() const { return _product; }
    // Empty before there is a product.
    const nxGenericProductID& _GetProductID() const;
    const std::string& _GetExchange() const;
    // Null before the first fill.
    const nxDecimal& _GetLastFillPrice() const { return _lastFillPrice; }
    const nxVolume& _GetLastFillVolume() const { return _lastFillVolume; }

private:
    using Order = nxAlgoOrderObject;
    friend class nxAlgoOrderUpdateObject;

    // Gives a member's value, read under the mutex. The push comes behind: it may leave the function.
    template <auto source>
    bool _Give(nxLuaResults& results, nxMutex& mutex)
    {
        const auto read = [&] {
            const nxMutexGuard guard(mutex);
            return std::invoke(source, *this);
        };
        results.Add(read());
        return true;
    }
    template <auto source>
    bool _Locked(nxLuaResults& results)
    {
        return _Give<source>(results, _orderMutex);
    }
    template <auto source>
    bool _LastFill(nxLuaResults& results)
    {
        return _Give<source>(results, _lastFillMutex);
    }
    template <auto source>
    bool _Unlocked(nxLuaResults& results)
    {
        results.Add((this->*source)());
        return true;
    }
    struct Times
    {
        std::unique_ptr<nxAlgoTimeStamp> lastExchangeFill, lastVorantUpdate;
    };
    // What most orders are never asked for.
    struct Rest
    {
        nxAlgoOrderStateObject state;
        nxSharedText exchange;
        std::unique_ptr<Times> times;
    };

    Rest& _GetRest();
    // Gives the time that `set` knows of, or nil.
    bool _GiveTime(nxLuaResults& results, std::unique_ptr<nxAlgoTimeStamp> Times::*which,
                   void (nxAlgoOrderObject::*set)(nxAlgoTimeStamp&));
    // The host's reason, or the text when it gives none.
    bool _FailWithReason(nxLuaResults& results, const char* text) const;

    // A run may hold a million orders that are over, so what is large is shared, or made when it is asked
    // for.
    nxAlgoProductObject* _product = nullptr;
    nxSharedText _side;
    nxSharedText _reference;  // guarded by _orderMutex

protected:
    mutable nxMutex _orderMutex;

private:
    nxMutex _lastFillMutex;
    nxDecimal _lastFillPrice;  // guarded by _lastFillMutex, as _lastFillVolume
    std::unique_ptr<Rest> _rest;
    nxVolume _lastFillVolume;
    bool _showOrder = false;
    bool _showOrderSet = false;
};
