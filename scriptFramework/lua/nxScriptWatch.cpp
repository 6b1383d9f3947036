#include "scriptFramework/lua/nxScriptWatch.h"

#include <algorithm>
#include <limits>
#include <lua.hpp>
#include <utility>

#include "base/enums/nxEnumValue.h"
#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxLuaWatchedFunctions.h"

namespace {

// Nobody catches it by type, and no std::exception would do: its text would be a script's to catch.
struct Ending
{
};

constexpr nxScriptLimits::Amount Endless = std::numeric_limits<nxScriptLimits::Amount>::max();

// The place in the innermost function that is the script's, as Lua's messages tell it.
std::string GetPlace(lua_State* L)
{
    lua_Debug activation;
    for (int level = 0; lua_getstack(L, level, &activation); ++level) {
        lua_getinfo(L, "Sl", &activation);
        if (activation.currentline > 0)
            return std::string(activation.short_src) + ":" + std::to_string(activation.currentline) + ": ";
    }
    return {};
}

}  // namespace

nxScriptWatch::nxScriptWatch(nxLuaState& state) : _state(state) {}

bool nxScriptWatch::IsCounting() const
{
    const nxScriptLimits& limits = _state.account->GetLimits();
    return limits.instructions != 0 || limits.depth != 0 || _pulse != nullptr || _debugger != nullptr ||
           _sampler != nullptr;
}

void nxScriptWatch::Prepare()
{
    lua_State* const L = _state.GetState();
    nxLuaWatchFunctions(L);
    const nxScriptLimits& limits = _state.account->GetLimits();
    _interval = !IsCounting() ? 0 : _sampler == nullptr ? Interval : _sampler->GetInterval();
    for (const nxScriptLimits::Amount limit : {limits.instructions, limits.depth})
        if (limit != 0) _interval = static_cast<unsigned int>(std::min<unsigned long long>(_interval, limit));
    if (_interval == 0) {
        lua_sethook(L, nullptr, 0, 0);
        return;
    }
#ifdef LUAJIT_VERSION
    luaJIT_setmode(L, 0, LUAJIT_MODE_ENGINE | LUAJIT_MODE_OFF);  // compiled code calls no hook
#endif
    _BeginCounting();
}

void nxScriptWatch::SetChunk(lua_State* L)
{
    lua_Debug activation;
    lua_pushvalue(L, -1);
    lua_getinfo(L, ">S", &activation);
    _chunk = activation.source;
}

void nxScriptWatch::_BeginCounting()
{
    const nxScriptLimits::Amount limit = _state.account->GetInstructions();
    _left = limit == 0 ? Endless : limit;
    if (_pulse != nullptr) {
        _pulse->line.store(0, std::memory_order_relaxed);
        _pulse->function.store(nullptr, std::memory_order_relaxed);
    }
    _SetHook();
}

// For a sampler the interval goes on from call to call, since most are shorter. Its end counts for no limit.
void nxScriptWatch::_SetHook()
{
    lua_State* const L = _state.GetState();
    int mask = LUA_MASKCOUNT;
    if (_debugger != nullptr) mask |= LUA_MASKLINE;
#ifndef LUAJIT_VERSION  // which tells no return of native functions
    if (_sampler != nullptr) mask |= LUA_MASKCALL | LUA_MASKRET;
#endif
    const auto interval = static_cast<int>(_interval);
    _isBegun = _sampler != nullptr && lua_gethook(L) == _OnHook && lua_gethookmask(L) == mask &&
               lua_gethookcount(L) == interval;
    if (!_isBegun) lua_sethook(L, _OnHook, mask, interval);
}

void nxScriptWatch::_OnHook(lua_State* L, lua_Debug* activation)
{
    nxLuaState& state = nxLuaState::Of(L);
    nxScriptWatch& watch = *state.watch;
    if (activation->event != LUA_HOOKCOUNT) return watch._Follow(L, activation);
    const auto instructions = static_cast<unsigned int>(lua_gethookcount(L));
    if (watch._sampler != nullptr && !watch._isEnding) watch._sampler->OnCount(L, instructions);
    if (watch._pulse != nullptr) watch._TellLine(L);
    watch.Spend(L, std::exchange(watch._isBegun, false) ? 0 : instructions);
    const nxScriptLimits::Amount depth = state.account->GetLimits().depth;
    constexpr nxScriptLimits::Amount most = 1 << 24;  // beyond what Lua allows
    lua_Debug deepest;
    if (depth != 0 && lua_getstack(L, static_cast<int>(std::min(depth, most)), &deepest))
        watch._End(L, nxError_LimitDepth, state.account->GetText(nxScriptLimit::Depth));
}

void nxScriptWatch::_Follow(lua_State* L, lua_Debug* activation)
{
    if (activation->event == LUA_HOOKLINE)
        _debugger->OnLine(L, static_cast<unsigned int>(activation->currentline));
    else if (activation->event == LUA_HOOKCALL)
        _sampler->OnCall(L, activation);
    else
        _sampler->OnReturn(L, activation);
}

void nxScriptWatch::Spend(lua_State* L, nxScriptLimits::Amount instructions)
{
    if (_isEnding) _GoOnEnding(L);
    if (_pulse != nullptr && _pulse->isStopWanted.load(std::memory_order_relaxed))
        _End(L, nxError_StoppedByHost, "stopped by the host");
    if (instructions < _left) {
        _left -= instructions;
        return;
    }
    const nxScriptAccount& account = *_state.account;
    _End(L, nxError_LimitInstructions,
         account.GetText(account.IsInShutdown() ? nxScriptLimit::ShutdownInstructions
                                                : nxScriptLimit::Instructions));
}

void nxScriptWatch::_End(lua_State* L, unsigned int error, const std::string& text)
{
    _isEnding = true;
    _error = error;
    _reason = GetPlace(L) + text;
    if (_debugger != nullptr) _debugger->OnFailure(L, 0, _reason);
    _GoOnEnding(L);
}

// The main thread may be waiting for this one, and others between them for each other: each comes to its next
// hook, and here, in time.
void nxScriptWatch::_GoOnEnding(lua_State* L)
{
    for (lua_State* const thread : {L, _state.GetState()})
        lua_sethook(thread, _OnHook, LUA_MASKCOUNT, 1);
    // What resume gives as the message is the value above the top of the stack.
    lua_pushlstring(L, _reason.data(), _reason.size());
    lua_pop(L, 1);
    throw Ending();
}

void nxScriptWatch::_TellLine(lua_State* L)
{
    constexpr int levels = 4;  // to look at: the function itself, or who called it
    lua_Debug activation;
    for (int level = 0; level < levels && lua_getstack(L, level, &activation); ++level) {
        lua_getinfo(L, "Sl", &activation);
        if (activation.source != _chunk || activation.currentline <= 0) continue;
        _pulse->line.store(static_cast<unsigned int>(activation.currentline), std::memory_order_relaxed);
        return;
    }
}

nxScriptWatch::Running::Running(nxScriptWatch& watch, lua_State* L, const char* function)
    : _pulse(watch._pulse)
{
    if (_pulse == nullptr) return;
    watch.Spend(L, 0);
    watch._TellLine(L);
    _before = _pulse->function.exchange(function, std::memory_order_relaxed);
}

nxScriptWatch::Running::~Running()
{
    if (_pulse != nullptr) _pulse->function.store(_before, std::memory_order_relaxed);
}
