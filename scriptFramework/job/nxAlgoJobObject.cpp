#include "scriptFramework/job/nxAlgoJobObject.h"

#include "base/log/nxLogMessage.h"
#include "base/threads/nxMutexGuard.h"

using Self = nxAlgoJobObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"getParameter", &Self::getParameter},
    {"setOutputParameter", &Self::setOutputParameter},
    {"getDynamicParameter", &Self::getDynamicParameter},
    {"sendParameter", &Self::sendParameter},
    {"publish", &Self::publish},
    {"hasContext", &Self::hasContext},
    {"setReference", &Self::setReference},
    {"getProduct", &Self::getProduct},
    {"getExistingOrder", &Self::getExistingOrder},
    {"getOrders", &Self::getOrders},
    {"getJobOrders", &Self::getJobOrders},
    {"getVorantJobs", &Self::getVorantJobs},
    {"createDataSeries", &Self::createDataSeries},
    {"getDataStore", &Self::getDataStore},
    {"logText", &Self::logText},
    {"sendUserState", &Self::sendUserState},
    {"sendUserText1", &Self::sendUserText1},
    {"sendUserText2", &Self::sendUserText2},
    {"sendUserText3", &Self::sendUserText3},
    {"sendUserLog", &Self::sendUserLog},
    {"startTimer", &Self::startTimer},
    {"stopTimer", &Self::stopTimer},
    {"shutdown", &Self::shutdown},
    {"setOrderUserString", &Self::setOrderUserString},
    {"setOrderUserString2", &Self::setOrderUserString2},
    {"setShatterOnExit", &Self::setShatterOnExit},
    {"setEnableCrossProtection", &Self::setEnableCrossProtection},
    {"setDisableParentFills", &Self::setDisableParentFills},
    {"setDisableReport", &Self::setDisableReport},
    {"setEnablePandL", &Self::setEnablePandL},
    {"getPandL", &Self::getPandL},
    {"setChartLine", &Self::setChartLine},
    {"removeChartLine", &Self::removeChartLine},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"selectedProduct", &Self::Get_selectedProduct, nullptr},
    {"selectedVolume", &Self::Get_selectedVolume, nullptr},
    {"selectedPrice", &Self::Get_selectedPrice, &Self::Set_selectedPrice},
    {"selectedSide", &Self::Get_selectedSide, nullptr},
    {"selectedSpreadSpec", &Self::Get_selectedSpreadSpec, nullptr},
    {"account", &Self::Get_account, nullptr},
    {"transactionCount", &Self::Get_transactionCount, nullptr},
    {"tag", &Self::Get_tag, &Self::Set_tag},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoJobObject::nxAlgoJobObject(nxAlgoJobInterface* job) : nxAlgoObject(job), _engine(this) {}

nxAlgoJobObject::~nxAlgoJobObject()
{
    _engine.Close();
}

nxErrorEnum nxAlgoJobObject::LoadFile(const std::string& path)
{
    if (_engine.nxLuaEngine::LoadScript(path)) return {};
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Failed to load file ", path);
    return _engine.GetFailure(nxError_ScriptLoadFailed);
}

nxErrorEnum nxAlgoJobObject::LoadScript(const std::string& text)
{
    if (_engine.LoadText(text)) return {};
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Failed to load text");
    return _engine.GetFailure(nxError_ScriptLoadFailed);
}

nxErrorEnum nxAlgoJobObject::StartJob()
{
    const nxMutexGuard guard(_mutex);
    return _engine.Start();
}

nxErrorEnum nxAlgoJobObject::StopJob()
{
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Stopping Algo Job Object ");
    // Such a job has stopped already, and may be calling from inside a callback, under the mutex.
    if (_shutdownRequested) return {};
    const nxMutexGuard guard(_mutex);
    return _engine.Stop();
}

bool nxAlgoJobObject::IsFunctionDefined(const std::string& name)
{
    const nxMutexGuard guard(_mutex);
    return _engine.DoesFunctionExist(name);
}

void nxAlgoJobObject::SetClockTime(const nxDateTime& time)
{
    const nxMutexGuard guard(_mutex);
    _engine.SetClockTime(time);
}

template <class Entry, class... Arguments>
nxErrorEnum nxAlgoJobObject::_Deliver(Entry entry, Arguments&... arguments)
{
    const nxMutexGuard guard(_mutex);
    return (_engine.*entry)(arguments...);
}

nxErrorEnum nxAlgoJobObject::OnPrice(nxAlgoPriceObject& price)
{
    return _Deliver(&nxAlgoScriptEngine::OnPrice, price);
}

nxErrorEnum nxAlgoJobObject::OnMarketDepth(nxAlgoMarketDepthObject& depth)
{
    return _Deliver(&nxAlgoScriptEngine::OnMarketDepth, depth);
}

nxErrorEnum nxAlgoJobObject::OnOrderFill(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderFill, update);
}

nxErrorEnum nxAlgoJobObject::OnOrderNew(nxAlgoOrderObject& order)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderNew, order);
}

nxErrorEnum nxAlgoJobObject::OnOrderWorking(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderWorking, update);
}

nxErrorEnum nxAlgoJobObject::OnOrderRejected(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderRejected, update);
}

nxErrorEnum nxAlgoJobObject::OnOrderCancelled(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderCancelled, update);
}

nxErrorEnum nxAlgoJobObject::OnOrderCompleted(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderCompleted, update);
}

nxErrorEnum nxAlgoJobObject::OnOrderAmendRejected(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderAmendRejected, update);
}

nxErrorEnum nxAlgoJobObject::OnOrderCancelRejected(nxAlgoOrderUpdateObject& update)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderCancelRejected, update);
}

nxErrorEnum nxAlgoJobObject::OnProductState(nxAlgoStateObject& state)
{
    return _Deliver(&nxAlgoScriptEngine::OnProductState, state);
}

nxErrorEnum nxAlgoJobObject::OnParameter(const std::string& name, const std::string& value,
                                         const std::string& tag)
{
    return _Deliver(&nxAlgoScriptEngine::OnParameter, name, value, tag);
}

nxErrorEnum nxAlgoJobObject::OnEventWindow(nxAlgoEventWindowObject& window)
{
    return _Deliver(&nxAlgoScriptEngine::OnEventWindow, window);
}

nxErrorEnum nxAlgoJobObject::OnPosition(nxAlgoPositionObject& position)
{
    return _Deliver(&nxAlgoScriptEngine::OnPosition, position);
}

nxErrorEnum nxAlgoJobObject::OnTimer(const std::string& name)
{
    return _Deliver(&nxAlgoScriptEngine::OnTimer, name);
}

nxErrorEnum nxAlgoJobObject::OnJobChanged()
{
    return _Deliver(&nxAlgoScriptEngine::OnJobChanged);
}

nxErrorEnum nxAlgoJobObject::OnJobParametersChanged()
{
    return _Deliver(&nxAlgoScriptEngine::OnJobParametersChanged);
}

nxErrorEnum nxAlgoJobObject::OnShutdown()
{
    const nxMutexGuard guard(_mutex);
    _inShutdown = true;
    const nxErrorEnum error = _engine.OnShutdown();
    _inShutdown = false;
    return error;
}

nxErrorEnum nxAlgoJobObject::OnJobNew(nxAlgoVorantJobObject& job)
{
    return _Deliver(&nxAlgoScriptEngine::OnVorantJobNew, job);
}

nxErrorEnum nxAlgoJobObject::OnJobStarted(nxAlgoVorantJobObject& job)
{
    return _Deliver(&nxAlgoScriptEngine::OnVorantJobStarted, job);
}

nxErrorEnum nxAlgoJobObject::OnJobStopped(nxAlgoVorantJobObject& job)
{
    return _Deliver(&nxAlgoScriptEngine::OnVorantJobStopped, job);
}

nxErrorEnum nxAlgoJobObject::OnJobStatusUpdate(nxAlgoVorantJobObject& job)
{
    return _Deliver(&nxAlgoScriptEngine::OnVorantJobStatusUpdate, job);
}

nxErrorEnum nxAlgoJobObject::OnJobUpdate(nxAlgoVorantJobObject& job)
{
    return _Deliver(&nxAlgoScriptEngine::OnVorantJobUpdate, job);
}

nxErrorEnum nxAlgoJobObject::OnOrderQPosition(nxAlgoOrderObject& order)
{
    return _Deliver(&nxAlgoScriptEngine::OnOrderQPosition, order);
}

nxErrorEnum nxAlgoJobObject::OnPriceTradeVolumes(nxAlgoPriceTradeVolumesObject& volumes)
{
    return _Deliver(&nxAlgoScriptEngine::OnPriceTradeVolumes, volumes);
}

nxErrorEnum nxAlgoJobObject::OnTickData(nxAlgoTickDataObject& tick)
{
    return _Deliver(&nxAlgoScriptEngine::OnTickData, tick);
}
