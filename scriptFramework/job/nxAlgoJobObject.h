#pragma once

#include <atomic>
#include <string>

#include "base/threads/nxMutex.h"
#include "scriptFramework/job/nxAlgoScriptEngine.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// One running algorithm: a script in a Lua state of its own, driven by a host, and the script's global `job`.
//
// The host constructs it with its nxAlgoJobInterface, which must outlive it, loads a script, starts the job
// and delivers events through the On... entries. Any thread may call in: the job mutex is held for the whole
// of StartJob, of each callback and of the locked part of StopJob, so the script runs on one thread at a
// time. LoadFile, LoadScript, SetScriptHelper and SetClockSpeed take no lock: call them when no event can
// arrive. A host must not call a locked entry from inside a call that came from the script, except StopJob
// after Shutdown.
//
// The active flag is set from construction, so a host delivers nothing before StartJob has succeeded.
class nxAlgoJobObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoJobObject";
    static const nxLuaWrapper<nxAlgoJobObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoJobObject>::PropertyType Properties[];

    explicit nxAlgoJobObject(nxAlgoJobInterface* job);
    // Closes the Lua state. Finalizers of the script run then, and may call the host.
    ~nxAlgoJobObject() override;

    // Both run the script's main chunk; nxError_ScriptLoadFailed when that fails. GetErrorText tells why,
    // except of a file. Lua chunks in binary form are refused.
    [[nodiscard]] nxErrorEnum LoadFile(const std::string& path);
    [[nodiscard]] nxErrorEnum LoadScript(const std::string& text);
    // Before the load whose line numbers it explains.
    void SetScriptHelper(const nxScriptHelper& helper) { _engine.SetScriptHelper(helper); }
    // What the script may use at most; nothing is limited before. A call that exceeds a limit ends, with an
    // error of its own in place of those told below, nxError_Limit... (see nxScriptLimitRows). Before the
    // load.
    void SetLimits(const nxScriptLimits& limits) { _engine.SetLimits(limits); }
    const nxScriptLimits& GetLimits() const { return _engine.GetLimits(); }
    // The limit of memory alone. At any time when no event can arrive.
    void SetMemoryLimit(std::size_t bytes) { _engine.SetMemoryLimit(bytes); }
    // GetBytesInUse is what Lua and the script's objects hold together.
    const nxLuaPool& GetMemory() const { return _engine.GetMemory(); }
    // Tells what the script does, to another thread or process, which may end the callback by it with
    // nxError_StoppedByHost. The host owns it, longer than the job; null for none. Before the load.
    void SetPulse(nxScriptPulse* pulse) { _engine.SetPulse(pulse); }
    // Follows the script line by line. The host owns it, longer than the job; null for none. Before the load.
    void SetDebugger(nxScriptDebugger* debugger) { _engine.SetDebugger(debugger); }
    // Who samples what the script does, which slows it down; before the load. It outlives the job.
    void SetSampler(nxScriptSampler* sampler) { _engine.SetSampler(sampler); }
    // What the script holds, by the paths on which it finds it, after a full collection; between callbacks.
    [[nodiscard]] bool ReadHeap(nxScriptHeap& heap) { return _engine.ReadHeap(heap); }
    // Gives the script random numbers of its own, which the seed determines on every machine, and keeps it
    // from changing the process's locale. Without this call jobs share both, as plain Lua does. Before the
    // load.
    void Isolate(unsigned long long seed) { _engine.Isolate(seed); }

    // Strict: nothing of Lua's libraries that reaches out of the script's state is there, not even for the
    // main chunk, and os.time, os.date and os.clock tell this job's time. It cannot be taken back. Before the
    // load.
    void SetProfile(nxScriptProfile profile) { _engine.SetProfile(profile); }

    // nxError_NoOnInit without a global function OnInit, nxError_StartFailed when it or the prelude fails.
    [[nodiscard]] nxErrorEnum StartJob();
    // Events are dropped from then on, OnShutdown excepted. Nothing to do for a job that shut itself down.
    nxErrorEnum StopJob();

    // What the latest load or call left: replaced by the next, so read it before delivering another event.
    std::string GetErrorText() { return _engine.GetLastError(); }
    // Answers while a script runs.
    bool IsActive() const { return _engine.IsActive(); }
    bool IsInShutdown() const { return _inShutdown; }
    // Whether the script, once loaded, defines a global function of that name.
    bool IsFunctionDefined(const std::string& name);

    void SetClockSpeed(double speed) { _engine.SetClockSpeed(speed); }
    void SetClockTime(const nxDateTime& time);

    // The events. nxError_CallbackFailed when the script raised an error; a script that does not define the
    // callback has not asked for the event. Arguments need to live as long as the script may hold them.
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
    // Of OnTradeWindowEvent.
    [[nodiscard]] nxErrorEnum OnEventWindow(nxAlgoEventWindowObject&);
    [[nodiscard]] nxErrorEnum OnPosition(nxAlgoPositionObject&);
    [[nodiscard]] nxErrorEnum OnTimer(const std::string& name);
    [[nodiscard]] nxErrorEnum OnJobChanged();
    [[nodiscard]] nxErrorEnum OnJobParametersChanged();
    // Reaches the script whether or not the job is still active.
    [[nodiscard]] nxErrorEnum OnShutdown();
    // Of a job that this one watches; the script's callbacks are OnVorantJobNew and so on.
    [[nodiscard]] nxErrorEnum OnJobNew(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnJobStarted(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnJobStopped(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnJobStatusUpdate(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnJobUpdate(nxAlgoVorantJobObject&);
    [[nodiscard]] nxErrorEnum OnOrderQPosition(nxAlgoOrderObject&);
    [[nodiscard]] nxErrorEnum OnPriceTradeVolumes(nxAlgoPriceTradeVolumesObject&);
    [[nodiscard]] nxErrorEnum OnTickData(nxAlgoTickDataObject&);

    bool getParameter(nxLuaParameters&, nxLuaResults&);
    bool setOutputParameter(nxLuaParameters&, nxLuaResults&);
    bool getDynamicParameter(nxLuaParameters&, nxLuaResults&);
    bool sendParameter(nxLuaParameters&, nxLuaResults&);
    bool publish(nxLuaParameters&, nxLuaResults&);
    bool hasContext(nxLuaParameters&, nxLuaResults&);
    bool setReference(nxLuaParameters&, nxLuaResults&);

    bool getProduct(nxLuaParameters&, nxLuaResults&);
    bool getExistingOrder(nxLuaParameters&, nxLuaResults&);
    bool getOrders(nxLuaParameters&, nxLuaResults&);
    bool getJobOrders(nxLuaParameters&, nxLuaResults&);
    bool getVorantJobs(nxLuaParameters&, nxLuaResults&);
    bool createDataSeries(nxLuaParameters&, nxLuaResults&);
    bool getDataStore(nxLuaParameters&, nxLuaResults&);

    bool logText(nxLuaParameters&, nxLuaResults&);
    bool sendUserState(nxLuaParameters&, nxLuaResults&);
    bool sendUserText1(nxLuaParameters&, nxLuaResults&);
    bool sendUserText2(nxLuaParameters&, nxLuaResults&);
    bool sendUserText3(nxLuaParameters&, nxLuaResults&);
    bool sendUserLog(nxLuaParameters&, nxLuaResults&);
    bool startTimer(nxLuaParameters&, nxLuaResults&);
    bool stopTimer(nxLuaParameters&, nxLuaResults&);
    bool shutdown(nxLuaParameters&, nxLuaResults&);
    bool setOrderUserString(nxLuaParameters&, nxLuaResults&);
    bool setOrderUserString2(nxLuaParameters&, nxLuaResults&);
    bool setShatterOnExit(nxLuaParameters&, nxLuaResults&);
    bool setEnableCrossProtection(nxLuaParameters&, nxLuaResults&);
    bool setDisableParentFills(nxLuaParameters&, nxLuaResults&);
    bool setDisableReport(nxLuaParameters&, nxLuaResults&);
    bool setEnablePandL(nxLuaParameters&, nxLuaResults&);
    bool getPandL(nxLuaParameters&, nxLuaResults&);
    bool setChartLine(nxLuaParameters&, nxLuaResults&);
    bool removeChartLine(nxLuaParameters&, nxLuaResults&);

    bool Get_selectedProduct(nxLuaResults&);
    bool Get_selectedVolume(nxLuaResults&);
    bool Get_selectedPrice(nxLuaResults&);
    bool Set_selectedPrice(const nxLuaParameter&);
    bool Get_selectedSide(nxLuaResults&);
    bool Get_selectedSpreadSpec(nxLuaResults&);
    bool Get_account(nxLuaResults&);
    bool Get_transactionCount(nxLuaResults&);
    bool Get_tag(nxLuaResults&);
    bool Set_tag(const nxLuaParameter&);

    // In no table, so that a script cannot reach them: a worked example of passing vectors, and the way to a
    // native library.
    bool calculate(nxLuaParameters&, nxLuaResults&);
    bool loadLibrary(nxLuaParameters&, nxLuaResults&);

private:
    template <class Entry, class... Arguments>
    nxErrorEnum _Deliver(Entry entry, Arguments&... arguments);

    nxAlgoScriptEngine _engine;
    std::atomic<bool> _shutdownRequested = false;
    nxMutex _mutex{true};
    std::atomic<bool> _inShutdown = false;
};
