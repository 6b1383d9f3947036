#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderParameters.h"

// An order whose answers all differ, and which writes down how it was called: each answer notes whether the
// order's mutex was held, 'o', or not, '-'.
class nxTestOrder : public nxAlgoOrderObject
{
public:
    using nxAlgoOrderObject::nxAlgoOrderObject;

    bool refuse = false;
    std::string throwOnCall;        // not empty: work, pull and getHedgeID throw a std::runtime_error with it
    nxAlgoOrderParameters changes;  // of the latest work
    nxVolume algoID;                // of the latest pull
    mutable std::string locks;
    nxAlgoOrderObject* parent = nullptr;
    nxOrderStatusEnum status;
    bool pendingAmend = false;
    bool pendingCancel = false;
    nxDateTime fillTime;  // the update is told a second later
    nxMutex statusMutex;

    bool IsMutexHeld() const
    {
        const bool taken = _orderMutex.Lock().IsSuccess();
        if (taken) static_cast<void>(_orderMutex.Unlock());
        return !taken;
    }
    std::string TakeLocks() { return std::exchange(locks, {}); }
    // From any thread.
    void SetStatus(const nxOrderStatusEnum& newStatus)
    {
        const nxMutexGuard guard(statusMutex);
        status = newStatus;
    }

    // What the script asks for.
    unsigned int GetID() const override { return _Answer(1u); }
    nxDecimal GetPrice() override { return _Answer(nxDecimal::FromMantissa(225, 2)); }
    unsigned int GetVolume() override { return _Answer(3u); }
    unsigned int GetWorking() override { return _Answer(4u); }
    unsigned int GetExecuted() override { return _Answer(5u); }
    unsigned int GetHedgeCount() override { return _Answer(6u); }
    nxVolume GetHedgeID(unsigned int i) override { return _AnswerCall() && i == 0 ? nxVolume() : i; }
    std::string GetType() override { return _Text("LIMIT"); }
    std::string GetExec() override { return _Text("IOC"); }
    std::string GetTime() override { return _Text("GTC"); }
    std::string GetSpreadSpec() override { return _Text("1:2"); }
    nxDecimal GetStopPrice() override { return _Answer(nxDecimal::FromMantissa(12, 0)); }
    nxVolume GetZephrinID() override { return _Volume(13); }
    std::string GetExchangeID() override { return _Text("X14"); }
    nxVolume GetIcebergMinPeakSize() override { return _Volume(15); }
    nxVolume GetIcebergMaxPeakSize() override { return _Volume(16); }
    nxVolume GetIcebergThreshold() override { return _Volume(17); }
    nxVolume GetBracketProfit() override { return _Volume(18); }
    nxVolume GetBracketStopLoss() override { return _Volume(nxNoChangeInitalizer()); }
    std::string GetBracketStopLossType() override { return _Text("MARKET"); }
    nxVolume GetBracketStopLossLimit() override { return _Volume(21); }
    bool GetBracketStopLossTrailing() override { return _Answer(false); }
    nxVolume GetBracketStopLossVolume() override { return _Volume(23); }
    nxDecimal GetAveragePrice() override { return _Answer(nxDecimal::FromMantissa(24, 0)); }
    bool IsCurrentJob() override { return _Answer(false); }
    nxVolume GetOriginatingZephrinID() override { return _Volume(26); }
    unsigned int GetOrderQPos() override { return _Answer(27u); }
    bool GetPaidUp() override { return _Answer(true); }

    using nxAlgoOrderObject::_SetLastFill;
    using nxAlgoOrderObject::GetBuySellEnum;

protected:
    bool _WorkOrder(const nxAlgoOrderParameters& parameters) override
    {
        changes = parameters;
        return _AnswerCall();
    }
    bool _PullOrder(const nxVolume& id) override
    {
        algoID = id;
        return _AnswerCall();
    }
    void _GetOrderStatus(nxOrderStatusEnum& out) override
    {
        const nxMutexGuard guard(statusMutex);
        out = _Answer(status);
    }
    bool _IsPendingAmend() const override { return pendingAmend; }
    bool _IsPendingCancel() const override { return pendingCancel; }
    bool _IsSpreadHedgeChild() override { return _Answer(true); }
    bool _IsSpreadWorkingChild() override { return _Answer(false); }
    nxAlgoOrderObject* _GetParent() override { return _Answer(parent); }
    nxAlgoOrderObject* _GetWorkingSpreadOrder() override { return _Answer<nxAlgoOrderObject*>(this); }
    std::string _GetAccount() override { return _Text("ACC"); }
    void _SetLastExchangeFillTime(nxAlgoTimeStamp& time) override { time.SetDateTime(_Answer(fillTime)); }
    void _SetLastVorantUpdateTime(nxAlgoTimeStamp& time) override
    {
        time.SetDateTime(_Answer(fillTime.GetAsTimeValue() + 1));
    }

private:
    std::string _Text(const char* answer) const { return _Answer<std::string>(answer); }
    nxVolume _Volume(const nxVolume& answer) const { return _Answer(answer); }
    template <class T>
    T _Answer(T answer) const
    {
        locks += IsMutexHeld() ? 'o' : '-';
        return answer;
    }
    bool _AnswerCall() const
    {
        if (!throwOnCall.empty()) throw std::runtime_error(throwOnCall);
        return _Answer(!refuse);
    }
};

// The orders that the test gives it, counted from 1.
class nxTestOrderCollection : public nxAlgoOrderCollectionObject
{
public:
    nxTestOrderCollection(nxAlgoJobInterface* job, std::vector<nxAlgoOrderObject*> orders)
        : nxAlgoOrderCollectionObject(job), _orders(std::move(orders))
    {
    }

    nxAlgoOrderObject* GetOrder(unsigned int i) override
    {
        return i - 1 < GetCount() ? _orders[i - 1] : nullptr;
    }
    unsigned int GetCount() override { return static_cast<unsigned int>(_orders.size()); }

private:
    std::vector<nxAlgoOrderObject*> _orders;
};
