#include "scriptFramework/job/nxAlgoScriptEngine.h"

#include <string_view>
#include <utility>

#include "base/log/nxLogMessage.h"
#include "scriptFramework/analytics/nxAlgoClockObject.h"
#include "scriptFramework/analytics/nxAlgoDataSeriesObject.h"
#include "scriptFramework/analytics/nxAlgoDataStoreObject.h"
#include "scriptFramework/analytics/nxAlgoDateObject.h"
#include "scriptFramework/analytics/nxAlgoEventWindowObject.h"
#include "scriptFramework/analytics/nxAlgoLibraryObject.h"
#include "scriptFramework/analytics/nxAlgoMatrixObject.h"
#include "scriptFramework/analytics/nxAlgoQuantObject.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"
#include "scriptFramework/job/nxAlgoJobInterface.h"
#include "scriptFramework/job/nxAlgoJobObject.h"
#include "scriptFramework/job/nxScriptPrelude.h"
#include "scriptFramework/market/nxAlgoMarketDepthObject.h"
#include "scriptFramework/market/nxAlgoPositionObject.h"
#include "scriptFramework/market/nxAlgoPriceObject.h"
#include "scriptFramework/market/nxAlgoPriceTradeVolumesObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"
#include "scriptFramework/market/nxAlgoStateObject.h"
#include "scriptFramework/orders/nxAlgoOrderCollectionObject.h"
#include "scriptFramework/orders/nxAlgoOrderObject.h"
#include "scriptFramework/orders/nxAlgoOrderUpdateObject.h"
#include "scriptFramework/supervision/nxAlgoVorantJobCollectionObject.h"
#include "scriptFramework/supervision/nxAlgoVorantJobObject.h"

namespace {

// What a hosted script may not reach. References that its main chunk took before stay usable. Under the
// strict profile there was nothing to take, and its own harmless `os` stays.
constexpr std::string_view Sandboxed[] = {"io",         "os",   "package", "coroutine",     "loadfile",
                                          "loadstring", "load", "dofile",  "collectgarbage"};

template <std::size_t... Index>
std::array<nxLuaFunction, sizeof...(Index)> MakeCallbacks(nxLuaEngine& engine, std::index_sequence<Index...>)
{
    return {nxLuaFunction(engine, nxCallbackNames[Index])...};
}

}  // namespace

nxAlgoScriptEngine::nxAlgoScriptEngine(nxAlgoJobObject* job)
    : _job(job), _callbacks(MakeCallbacks(*this, std::make_index_sequence<nxCallbackNames.size()>()))
{
    nxAlgoJobInterface* interface = job == nullptr ? nullptr : job->GetJob();
    _clock = std::make_unique<nxAlgoClockObject>(interface);
    _matrix = std::make_unique<nxAlgoMatrixObject>(interface);
    _quant = std::make_unique<nxAlgoQuantObject>(interface);
    _date = std::make_unique<nxAlgoDateObject>(interface);
}

// The service objects outlive the script, whose finalizers may still read the clock.
nxAlgoScriptEngine::~nxAlgoScriptEngine()
{
    Close();
}

void nxAlgoScriptEngine::SetProfile(nxScriptProfile profile)
{
    if (profile == nxScriptProfile::Base) return;
    nxAlgoJobInterface* const host = _job == nullptr ? nullptr : _job->GetJob();
    const nxAlgoClockObject* const clock = _clock.get();
    _Restrict({[clock] { return clock->GetClockTime().GetAsTimeValue(); },
               [clock] { return clock->GetTotalSeconds(); },
               [host](const std::string& text) {
                   if (host != nullptr) host->LogText(text);
               }});
}

void nxAlgoScriptEngine::_RegisterCustomObjects()
{
    lua_State* L = _GetState();
    nxLuaWrapper<nxAlgoPositionObject>::Register(L);
    nxLuaWrapper<nxAlgoOrderUpdateObject>::Register(L);
    nxLuaWrapper<nxAlgoOrderObject>::Register(L);
    nxLuaWrapper<nxAlgoPriceObject>::Register(L);
    nxLuaWrapper<nxAlgoMarketDepthObject>::Register(L);
    nxLuaWrapper<nxAlgoJobObject>::Register(L);
    nxLuaWrapper<nxAlgoProductObject>::Register(L);
    nxLuaWrapper<nxAlgoEventWindowObject>::Register(L);
    nxLuaWrapper<nxAlgoOrderCollectionObject>::Register(L);
    nxLuaWrapper<nxAlgoClockObject>::Register(L);
    nxLuaWrapper<nxAlgoDataSeriesObject>::Register(L);
    nxLuaWrapper<nxAlgoStateObject>::Register(L);
    nxLuaWrapper<nxAlgoOrderStateObject>::Register(L);
    nxLuaWrapper<nxAlgoLibraryObject>::Register(L);
    nxLuaWrapper<nxAlgoMatrixObject>::Register(L);
    nxLuaWrapper<nxAlgoQuantObject>::Register(L);
    nxLuaWrapper<nxAlgoVorantJobCollectionObject>::Register(L);
    nxLuaWrapper<nxAlgoVorantJobObject>::Register(L);
    nxLuaWrapper<nxAlgoDataStoreObject>::Register(L);
    nxLuaWrapper<nxAlgoPriceTradeVolumesObject>::Register(L);
    nxLuaWrapper<nxAlgoTickDataCollectionObject>::Register(L);
    nxLuaWrapper<nxAlgoTickDataObject>::Register(L);
    nxLuaWrapper<nxAlgoIndicatorObject>::Register(L);
    nxLuaWrapper<nxAlgoDateObject>::Register(L);
}

const std::string& nxAlgoScriptEngine::GetLogPrefix() const
{
    static const std::string none;
    return _job == nullptr ? none : _job->GetLogPrefix();
}

bool nxAlgoScriptEngine::_BindGlobals()
{
    return nxLuaWrapper<nxAlgoJobObject>::SetGlobal(*this, "job", _job) &&
           nxLuaWrapper<nxAlgoClockObject>::SetGlobal(*this, "clock", _clock.get()) &&
           nxLuaWrapper<nxAlgoMatrixObject>::SetGlobal(*this, "matrix", _matrix.get()) &&
           nxLuaWrapper<nxAlgoQuantObject>::SetGlobal(*this, "quant", _quant.get()) &&
           nxLuaWrapper<nxAlgoDateObject>::SetGlobal(*this, "date", _date.get());
}

nxErrorEnum nxAlgoScriptEngine::Start()
{
    if (!_Get(nxCallback::OnInit).IsValid()) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "OnInit does not exist");
        return nxError_NoOnInit;
    }
    for (const std::string_view name : Sandboxed)
        if (!_IsRestricted() || name != "os") RemoveFunction(std::string(name));
    if (!_BindGlobals() || !LoadModule(nxScriptPreludeText())) {
        nxLogMessage(nxLogLevel::Error, GetLogPrefix(),
                     "Script Engine Start Failed. Error : ", GetLastError());
        return GetFailure(nxError_StartFailed);
    }
    if (!_Get(nxCallback::OnInit).Call()) {
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "OnInit failed. Error : ", GetLastError());
        return GetFailure(nxError_StartFailed);
    }
    return {};
}

nxErrorEnum nxAlgoScriptEngine::Stop()
{
    _active = false;
    return {};
}

bool nxAlgoScriptEngine::IsActive() const
{
    return _active;
}

template <class... Parts>
nxErrorEnum nxAlgoScriptEngine::_Failed(const Parts&... parts)
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), parts..., GetLastError());
    return GetFailure(nxError_CallbackFailed);
}

template <class Argument>
nxErrorEnum nxAlgoScriptEngine::_Deliver(nxCallback callback, Argument& argument, const char* failure)
{
    if (!IsActive() || _Get(callback).Call(argument)) return {};
    return _Failed(failure);
}

nxErrorEnum nxAlgoScriptEngine::_Deliver(nxCallback callback, const char* failure)
{
    if (!IsActive() || _Get(callback).Call()) return {};
    return _Failed(failure);
}

nxErrorEnum nxAlgoScriptEngine::OnPrice(nxAlgoPriceObject& price)
{
    return _Deliver(nxCallback::OnPrice, price, "OnPrice failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnMarketDepth(nxAlgoMarketDepthObject& depth)
{
    return _Deliver(nxCallback::OnMarketDepth, depth, "OnMarketDepth failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderFill(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderFill, update, "OnOrderFill failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderNew(nxAlgoOrderObject& order)
{
    return _Deliver(nxCallback::OnOrderNew, order, "OnOrderNew failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderWorking(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderWorking, update, "OnOrderWorking failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderRejected(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderRejected, update, "OnOrderRejected failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderCancelled(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderCancelled, update, "OnOrderCancelled failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderCompleted(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderCompleted, update, "OnOrderCompleted failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderAmendRejected(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderAmendRejected, update, "OnOrderAmendRejected failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderCancelRejected(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(nxCallback::OnOrderCancelRejected, update, "OnOrderCancelRejected failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnProductState(nxAlgoStateObject& state)
{
    return _Deliver(nxCallback::OnProductState, state, "OnProductState failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnParameter(const std::string& name, const std::string& value,
                                            const std::string& tag)
{
    if (!IsActive() || _Get(nxCallback::OnParameter).Call(name, value, tag)) return {};
    return _Failed("OnParameter ( ", name, " , ", value, " ) Tag = ", tag, " failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnEventWindow(nxAlgoEventWindowObject& window)
{
    // The text keeps another name, which those who read logs search for.
    return _Deliver(nxCallback::OnTradeWindowEvent, window, "OnTradeStreamEvent failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnPosition(nxAlgoPositionObject& position)
{
    return _Deliver(nxCallback::OnPosition, position, "OnPosition failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnTimer(const std::string& name)
{
    if (!IsActive() || _Get(nxCallback::OnTimer).Call(name)) return {};
    return _Failed("OnTimer ( ", name, " ) failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnJobChanged()
{
    return _Deliver(nxCallback::OnJobChanged, "OnJobChanged failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnJobParametersChanged()
{
    return _Deliver(nxCallback::OnJobParametersChanged, "OnJobParametersChanged failed. Error : ");
}

// Also for a job that has been stopped, so that it can clean up.
nxErrorEnum nxAlgoScriptEngine::OnShutdown()
{
    _SetInShutdown(true);
    const bool succeeded = _Get(nxCallback::OnShutdown).Call();
    _SetInShutdown(false);
    if (succeeded) return {};
    return _Failed("OnShutdown failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnVorantJobNew(nxAlgoVorantJobObject& job)
{
    return _Deliver(nxCallback::OnVorantJobNew, job, "OnVorantJobNew failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnVorantJobStarted(nxAlgoVorantJobObject& job)
{
    return _Deliver(nxCallback::OnVorantJobStarted, job, "OnVorantJobStarted failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnVorantJobStopped(nxAlgoVorantJobObject& job)
{
    return _Deliver(nxCallback::OnVorantJobStopped, job, "OnVorantJobStopped failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnVorantJobStatusUpdate(nxAlgoVorantJobObject& job)
{
    return _Deliver(nxCallback::OnVorantJobStatusUpdate, job, "OnVorantJobStatusUpdate failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnVorantJobUpdate(nxAlgoVorantJobObject& job)
{
    return _Deliver(nxCallback::OnVorantJobUpdate, job, "OnVorantJobUpdate failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnOrderQPosition(nxAlgoOrderObject& order)
{
    return _Deliver(nxCallback::OnOrderQPosition, order, "OnOrderQPosition failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnPriceTradeVolumes(nxAlgoPriceTradeVolumesObject& volumes)
{
    return _Deliver(nxCallback::OnPriceTradeVolumes, volumes, "OnPriceTradeVolumes failed. Error : ");
}

nxErrorEnum nxAlgoScriptEngine::OnTickData(nxAlgoTickDataObject& tick)
{
    return _Deliver(nxCallback::OnTickData, tick, "OnTickData failed. Error : ");
}

void nxAlgoScriptEngine::SetClockSpeed(double speed)
{
    _clock->SetClockSpeed(speed);
}

void nxAlgoScriptEngine::SetClockTime(const nxDateTime& time)
{
    if (IsActive()) _clock->SetClockTime(time);
}
