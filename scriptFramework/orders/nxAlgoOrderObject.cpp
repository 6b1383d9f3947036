#include "scriptFramework/orders/nxAlgoOrderObject.h"

#include "base/log/nxLogMessage.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/lua/nxScriptAccount.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/orders/nxAlgoOrderParameters.h"

using Self = nxAlgoOrderObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"work", &Self::work},
    {"pull", &Self::pull},
    {"getHedgeID", &Self::getHedgeID},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"product", &Self::Get_product, nullptr},
    {"price", &Self::Get_price, nullptr},
    {"side", &Self::Get_side, nullptr},
    {"hedgeCount", &Self::Get_hedgeCount, nullptr},
    {"volume", &Self::Get_volume, nullptr},
    {"working", &Self::Get_working, nullptr},
    {"executed", &Self::Get_executed, nullptr},
    {"type", &Self::Get_type, nullptr},
    {"exec", &Self::Get_exec, nullptr},
    {"time", &Self::Get_time, nullptr},
    {"spreadSpec", &Self::Get_spreadSpec, nullptr},
    {"stopPrice", &Self::Get_stopPrice, nullptr},
    {"zephrinID", &Self::Get_zephrinID, nullptr},
    {"exchangeID", &Self::Get_exchangeID, nullptr},
    {"state", &Self::Get_state, nullptr},
    {"icebergMinPeakSize", &Self::Get_icebergMinPeakSize, nullptr},
    {"icebergMaxPeakSize", &Self::Get_icebergMaxPeakSize, nullptr},
    {"icebergThreshold", &Self::Get_icebergThreshold, nullptr},
    {"bracketProfit", &Self::Get_bracketProfit, nullptr},
    {"bracketStopLoss", &Self::Get_bracketStopLoss, nullptr},
    {"bracketStopLossType", &Self::Get_bracketStopLossType, nullptr},
    {"bracketStopLossLimit", &Self::Get_bracketStopLossLimit, nullptr},
    {"bracketStopLossTrailing", &Self::Get_bracketStopLossTrailing, nullptr},
    {"bracketStopLossVolume", &Self::Get_bracketStopLossVolume, nullptr},
    {"isSpreadHedge", &Self::Get_isSpreadHedge, nullptr},
    {"isSpreadWorking", &Self::Get_isSpreadWorking, nullptr},
    {"isCurrentJob", &Self::Get_isCurrentJob, nullptr},
    {"parent", &Self::Get_parent, nullptr},
    {"averagePrice", &Self::Get_averagePrice, nullptr},
    {"lastFillPrice", &Self::Get_lastFillPrice, nullptr},
    {"lastFillVolume", &Self::Get_lastFillVolume, nullptr},
    {"spreadWorkingOrder", &Self::Get_spreadWorkingOrder, nullptr},
    {"account", &Self::Get_account, nullptr},
    {"lastVorantUpdateTime", &Self::Get_lastVorantUpdateTime, nullptr},
    {"lastExchangeFillTime", &Self::Get_lastExchangeFillTime, nullptr},
    {"originatingZephrinID", &Self::Get_originatingZephrinID, nullptr},
    {"qposition", &Self::Get_qposition, nullptr},
    {"paidUp", &Self::Get_paidUp, nullptr},
    {"reference", &Self::Get_reference, &Self::Set_reference},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoOrderObject::nxAlgoOrderObject(nxAlgoJobInterface* job) : nxAlgoObject(job) {}

nxAlgoOrderObject::nxAlgoOrderObject(nxAlgoJobInterface* job, nxAlgoProductObject* product)
    : nxAlgoOrderObject(job)
{
    SetProduct(product);
}

void nxAlgoOrderObject::SetProduct(nxAlgoProductObject* product)
{
    _product = product;
}

// A product keeps its identity, so nothing is copied.
const nxGenericProductID& nxAlgoOrderObject::_GetProductID() const
{
    static const nxGenericProductID none;
    return _product == nullptr ? none : _product->GetGenericProductID();
}

nxAlgoOrderObject::Rest& nxAlgoOrderObject::_GetRest()
{
    if (_rest == nullptr) _rest.reset(new Rest{nxAlgoOrderStateObject(GetJob()), {}, nullptr});
    return *_rest;
}

const std::string& nxAlgoOrderObject::_GetExchange() const
{
    static const std::string none;
    return _rest == nullptr ? none : _rest->exchange.Get();
}

void nxAlgoOrderObject::SetShowOrder(bool show)
{
    _showOrderSet = true;
    _showOrder = show;
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Setting showOrder = ", show);
}

bool nxAlgoOrderObject::GetShowOrder(bool& value) const
{
    if (_showOrderSet) value = _showOrder;
    return _showOrderSet;
}

nxBuySellEnum nxAlgoOrderObject::GetBuySellEnum() const
{
    return GetSide() == "BUY" ? nxBuySell_Buy : GetSide() == "SELL" ? nxBuySell_Sell : nxEnum_Undefined;
}

void nxAlgoOrderObject::_SetLastFill(const nxDecimal& price, const nxVolume& volume)
{
    const nxMutexGuard guard(_lastFillMutex);
    _lastFillPrice = price;
    _lastFillVolume = volume;
}

bool nxAlgoOrderObject::_FailWithReason(nxLuaResults& results, const char* text) const
{
    const std::string reason = GetJob()->GetError();
    return results.Fail(reason.empty() ? text : reason);
}

bool nxAlgoOrderObject::IsOver()
{
    nxOrderStatusEnum status;
    _GetOrderStatus(status);
    return status == nxOrderStatus_Deleted || status == nxOrderStatus_Filled ||
           status == nxOrderStatus_Rejected || status == nxOrderStatus_Expired;
}

// Anything but a table is a set in which nothing changes, and reaches the host as one.
bool nxAlgoOrderObject::work(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("Requires named value parameter");
    nxAlgoOrderParameters changes;
    std::string error;
    if (!changes.SetParameters(parameters.Parameter(1), error, _product->GetPriceManipulator(),
                               nxRoundingMethod_Nearest))
        return results.Fail("Work parameters incorrect. " + error);
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Work order");
    const nxMutexGuard guard(_orderMutex);
    changes.Show(GetLogPrefix());
    return _WorkOrder(changes) || _FailWithReason(results, "Work Order Validation Failed");
}

// Whatever is no table with a number for "algoID" stands for none.
bool nxAlgoOrderObject::pull(nxLuaParameters& parameters, nxLuaResults& results)
{
    nxVolume algoID;
    std::string text;
    if (parameters.Count() == 1 && parameters.Parameter(1).GetNamedValue("algoID", text))
        static_cast<void>(algoID.SetFromString(text));
    const nxMutexGuard guard(_orderMutex);
    return _PullOrder(algoID) || _FailWithReason(results, "Pull Order Validation Failed");
}

bool nxAlgoOrderObject::getHedgeID(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("Requires index parameter");
    const unsigned int index = parameters.Parameter(1).GetUnsigned();
    const auto read = [&] {
        const nxMutexGuard guard(_orderMutex);
        return GetHedgeID(index);
    };
    results.Add(read());
    return true;
}

bool nxAlgoOrderObject::Get_product(nxLuaResults& results)
{
    results.AddObject(_product);
    return true;
}

bool nxAlgoOrderObject::Get_state(nxLuaResults& results)
{
    nxOrderStatusEnum status;
    _GetOrderStatus(status);
    nxAlgoOrderStateObject& state = _GetRest().state;
    state.SetStatus(status);
    state.SetPendingAmend(_IsPendingAmend());
    state.SetPendingCancel(_IsPendingCancel());
    results.AddObject(&state);
    return true;
}

bool nxAlgoOrderObject::Get_parent(nxLuaResults& results)
{
    results.AddObjectOrNull(_GetParent());
    return true;
}

bool nxAlgoOrderObject::Get_spreadWorkingOrder(nxLuaResults& results)
{
    results.AddObjectOrNull(_GetWorkingSpreadOrder());
    return true;
}

bool nxAlgoOrderObject::_GiveTime(nxLuaResults& results, std::unique_ptr<nxAlgoTimeStamp> Times::*which,
                                  void (nxAlgoOrderObject::*set)(nxAlgoTimeStamp&))
{
    std::unique_ptr<Times>& times = _GetRest().times;
    if (times == nullptr) times = std::make_unique<Times>();
    std::unique_ptr<nxAlgoTimeStamp>& time = (*times).*which;
    if (time == nullptr) time = std::make_unique<nxAlgoTimeStamp>(GetJob());
    (this->*set)(*time);
    results.AddObjectOrNull<nxAlgoClockObject>(time->IsValid() ? time.get() : nullptr);
    return true;
}

bool nxAlgoOrderObject::Get_lastVorantUpdateTime(nxLuaResults& results)
{
    return _GiveTime(results, &Times::lastVorantUpdate, &nxAlgoOrderObject::_SetLastVorantUpdateTime);
}

bool nxAlgoOrderObject::Get_lastExchangeFillTime(nxLuaResults& results)
{
    return _GiveTime(results, &Times::lastExchangeFill, &nxAlgoOrderObject::_SetLastExchangeFillTime);
}

bool nxAlgoOrderObject::Set_reference(const nxLuaParameter& value)
{
    const std::string reference = value.GetString();
    const std::size_t before = GetReference().size();
    nxScriptAccount& account = *value.GetAccount();
    if (reference.size() > before) value.Require(account.Charge(reference.size() - before));
    if (reference.size() < before) account.Release(before - reference.size());
    SetReference(reference);
    return true;
}

void nxAlgoOrderObject::SetReference(const std::string& reference)
{
    const nxMutexGuard guard(_orderMutex);
    _reference = reference;
}
