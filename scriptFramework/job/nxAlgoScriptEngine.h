#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>

#include "base/enums/nxErrorEnum.h"
#include "scriptFramework/job/nxCallback.h"
#include "scriptFramework/lua/nxLuaEngine.h"
#include "scriptFramework/lua/nxLuaFunction.h"

class nxAlgoClockObject;
class nxAlgoDateObject;
class nxAlgoEventWindowObject;
class nxAlgoJobObject;
class nxAlgoMarketDepthObject;
class nxAlgoMatrixObject;
class nxAlgoOrderObject;
class nxAlgoOrderUpdateObject;
class nxAlgoPositionObject;
class nxAlgoPriceObject;
class nxAlgoPriceTradeVolumesObject;
class nxAlgoQuantObject;
class nxAlgoStateObject;
class nxAlgoTickDataObject;
class nxAlgoVorantJobObject;
class nxDateTime;

// The Lua engine of one job: the sandbox, the script's global objects and its callbacks. Belongs to its
// nxAlgoJobObject, whose mutex sees to it that one thread at a time is in here; only the active flag may be
// read from anywhere, so that IsActive answers while a script runs.
//
// A callback that the script does not define is a success. One that raises an error is logged and answered
// with nxError_CallbackFailed, and the job goes on: whether it stops is the host's decision. Once the engine
// has been stopped, events are dropped without a trace, except OnShutdown.
class nxAlgoScriptEngine : public nxLuaEngine
{
public:
    explicit nxAlgoScriptEngine(nxAlgoJobObject* job);
    ~nxAlgoScriptEngine() override;

    // Before the load. Strict cannot be taken back.
    void SetProfile(nxScriptProfile profile);

    // Checks that OnInit exists, applies the sandbox, binds the globals, loads the prelude and runs OnInit.
    [[nodiscard]] nxErrorEnum Start();
    nxErrorEnum Stop();
    bool IsActive() const;

    [[nodiscard]] nxErrorEnum OnPrice(nxAlgoPriceObject&);
    [[nodiscard]] nxErrorEnum OnMarketDepth(nxAlgoMarketDepthObject&);
    [[nodiscard]] nxErrorEnum OnOrderFill(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnOrderNew(nxAlgoOrderObject&);
    [[nodiscard]] nxErrorEnum OnOrderWorking(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnOrderRejected(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnOrderCancelled(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnOrderCompleted(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnOrderAmendRejected(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnOrderCancelRejected(nxAlgoOrderUpdateObject&);
    [[nodiscard]] nxErrorEnum OnProductState(nxAlgoStateObject&);
    [[nodiscard]] nxErrorEnum OnParameter(const std::string& name, const std::string& value,
                                          const std::string& tag);
    [[nodiscard]] nxErrorEnum OnEventWindow(nxAlgoEventWindowObject&);
    [[nodiscard]] nxErrorEnum OnPosition(nxAlgoPositionObject&);
    [[nodiscard]] nxErrorEnum OnTimer(const std::string& name);
    [[nodiscard]] nxErrorEnum OnJobChanged();
    [[nodiscard]] nxErrorEnum OnJobParametersChanged();
    [[nodiscard]] nxErrorEnum OnShutdown();
    [[nodiscard]] nxErrorEnum OnVorantJobNew(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnVorantJobStarted(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnVorantJobStopped(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnVorantJobStatusUpdate(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnVorantJobUpdate(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnOrderQPosition(nxAlgoOrderObject&);
    [[nodiscard]] nxErrorEnum OnPriceTradeVolumes(nxAlgoPriceTradeVolumesObject&);
    [[nodiscard]] nxErrorEnum OnTickData(nxAlgoTickDataObject&);

    // Of what failed just now: which limit ended it, and what else it is when none did.
    nxErrorEnum GetFailure(nxErrorEnum otherwise) const
    {
        return GetLimitError() == 0 ? otherwise : nxErrorEnum(GetLimitError());
    }

    void SetClockSpeed(double speed);
    // Nothing once the engine has stopped.
    void SetClockTime(const nxDateTime& time);

protected:
    const std::string& GetLogPrefix() const;
    void _RegisterCustomObjects() override;

private:
    // Logs the parts with the last error behind them.
    template <class... Parts>
    nxErrorEnum _Failed(const Parts&... parts);
    nxLuaFunction& _Get(nxCallback callback) { return _callbacks[static_cast<std::size_t>(callback)]; }
    template <class Argument>
    nxErrorEnum _Deliver(nxCallback callback, Argument& argument, const char* failure);
    nxErrorEnum _Deliver(nxCallback callback, const char* failure);
    bool _BindGlobals();

    nxAlgoJobObject* _job;  // owns the engine; null in a test
    std::atomic<bool> _active = true;

    std::array<nxLuaFunction, nxCallbackNames.size()> _callbacks;

    std::unique_ptr<nxAlgoClockObject> _clock;
    std::unique_ptr<nxAlgoMatrixObject> _matrix;
    std::unique_ptr<nxAlgoQuantObject> _quant;
    std::unique_ptr<nxAlgoDateObject> _date;
};
