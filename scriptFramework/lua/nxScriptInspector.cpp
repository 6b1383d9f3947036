#include "scriptFramework/lua/nxScriptInspector.h"

#include <algorithm>
#include <lua.hpp>

#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxScriptScope.h"

namespace {

const char ValuesKey = 0;  // of the registry: a table of the values by reference

}  // namespace

void nxScriptInspector::Stop(lua_State* thread, int level, bool isInHook)
{
    _thread = thread;
    _level = level;
    _isInHook = isInHook;
}

void nxScriptInspector::StopIdle()
{
    Stop(_state.GetState(), 0, false);
}

void nxScriptInspector::Resume()
{
    if (_references.empty()) return;
    _references.clear();
    std::string ignored;
    _Try(
        [](lua_State* L) {
            lua_pushlightuserdata(L, const_cast<char*>(&ValuesKey));
            lua_pushnil(L);
            lua_rawset(L, LUA_REGISTRYINDEX);
        },
        ignored);
}

bool nxScriptInspector::IsDeeperThan(lua_State* thread, int depth)
{
    lua_Debug activation;
    return lua_getstack(thread, depth, &activation) != 0;
}

// Lua walks to each level from the top, so a deep stack is measured in few steps.
int nxScriptInspector::GetDepth(lua_State* thread)
{
    int least = 0, most = 1;
    for (; IsDeeperThan(thread, most - 1); most *= 2)
        least = most;
    while (least + 1 < most) {
        const int middle = least + (most - least) / 2;
        (IsDeeperThan(thread, middle - 1) ? least : most) = middle;
    }
    return least;
}

bool nxScriptInspector::IsInScript(lua_State* thread) const
{
    lua_Debug activation;
    return lua_getstack(thread, 0, &activation) != 0 && lua_getinfo(thread, "S", &activation) != 0 &&
           activation.source == _state.watch->GetChunk();
}

std::vector<nxScriptInspector::Frame> nxScriptInspector::GetFrames(int first, int count) const
{
    std::vector<Frame> frames;
    lua_Debug activation;
    const int begin = _level + first;
    for (int level = begin; level - begin < count && lua_getstack(_thread, level, &activation); ++level) {
        lua_getinfo(_thread, "nSl", &activation);
        const bool isNative = activation.currentline < 0;
        const Frame::Kind kind = isNative                                        ? Frame::Kind::Native
                                 : activation.source == _state.watch->GetChunk() ? Frame::Kind::Script
                                                                                 : Frame::Kind::Library;
        std::string name = activation.name == nullptr ? "" : activation.name;
        if (*activation.what == 't') name = "(tail call)";
        frames.push_back(
            {kind, level, std::move(name), isNative ? 0 : static_cast<unsigned int>(activation.currentline)});
    }
    return frames;
}

// Null where there is none.
std::unique_ptr<lua_Debug> nxScriptInspector::_Find(int level) const
{
    auto function = std::make_unique<lua_Debug>();
    if (level < _level || lua_getstack(_thread, level, function.get()) == 0) return nullptr;
    return function;
}

bool nxScriptInspector::_Try(const std::function<void(lua_State*)>& body, std::string& error)
{
    lua_State* const L = _thread;
    const lua_Hook hook = lua_gethook(L);
    const int mask = lua_gethookmask(L);
    const int count = lua_gethookcount(L);
    // In a hook Lua calls no other one, and to set it would begin the count anew.
    if (!_isInHook) lua_sethook(L, nullptr, 0, 0);
    const bool wasBusy = std::exchange(_isBusy, true);
    const auto call = [](lua_State* state) {
        const auto& what = *static_cast<const std::function<void(lua_State*)>*>(lua_touserdata(state, 1));
        lua_settop(state, 0);
        luaL_checkstack(state, 32, "no room to look");
        what(state);
        return 0;
    };
    const bool succeeded = lua_cpcall(L, call, const_cast<std::function<void(lua_State*)>*>(&body)) == 0;
    if (!succeeded) {
        const char* const text = lua_tostring(L, -1);
        error = text == nullptr ? "an error without a text" : text;
        lua_pop(L, 1);
    }
    _isBusy = wasBusy;
    if (!_isInHook) lua_sethook(L, hook, mask, count);
    return succeeded;
}

unsigned int nxScriptInspector::_Add(Reference reference)
{
    _references.push_back(std::move(reference));
    return static_cast<unsigned int>(_references.size());
}

// Takes the value at the top.
void nxScriptInspector::_Keep(unsigned int reference)
{
    lua_State* const L = _thread;
    lua_pushlightuserdata(L, const_cast<char*>(&ValuesKey));
    lua_rawget(L, LUA_REGISTRYINDEX);
    if (!lua_istable(L, -1)) {
        lua_pop(L, 1);
        lua_newtable(L);
        lua_pushlightuserdata(L, const_cast<char*>(&ValuesKey));
        lua_pushvalue(L, -2);
        lua_rawset(L, LUA_REGISTRYINDEX);
    }
    lua_insert(L, -2);
    lua_rawseti(L, -2, static_cast<int>(reference));
    lua_pop(L, 1);
}

void nxScriptInspector::_PushKept(unsigned int reference)
{
    lua_pushlightuserdata(_thread, const_cast<char*>(&ValuesKey));
    lua_rawget(_thread, LUA_REGISTRYINDEX);
    lua_rawgeti(_thread, -1, static_cast<int>(reference));
    lua_remove(_thread, -2);
}

// Leaves the one value that the text comes to; nil for a statement.
void nxScriptInspector::_Compute(const lua_Debug* function, const std::string& text)
{
    lua_State* const L = _thread;
    nxScriptScope* const scope = nxScriptScope::Push(L);
    if (function != nullptr) scope->SetFunction(*function);
    nxScriptScope::PushCompiled(L, text);
    nxScriptScope::PushEnvironment(L, *scope);
    lua_setfenv(L, -2);
    lua_call(L, 0, 1);
    lua_remove(L, -2);
}

nxScriptInspector::Outcome nxScriptInspector::_Give(const std::function<Value()>& body)
{
    Outcome outcome;
    if (!_Try([&](lua_State*) { outcome.value = body(); }, outcome.error)) outcome.value.reset();
    return outcome;
}

nxScriptInspector::Outcome nxScriptInspector::Evaluate(int level, const std::string& text)
{
    const auto function = _Find(level);
    return _Give([&] {
        _Compute(function.get(), text);
        return _Describe("", text);
    });
}

bool nxScriptInspector::Test(int level, const std::string& text, std::string& error)
{
    const auto function = _Find(level);
    bool isTrue = false;
    const auto run = [&](lua_State* L) {
        _Compute(function.get(), text);
        isTrue = lua_toboolean(L, -1) != 0;
    };
    return _Try(run, error) && isTrue;
}

nxScriptInspector::Outcome nxScriptInspector::SetExpression(int level, const std::string& expression,
                                                            const std::string& text)
{
    const auto function = _Find(level);
    return _Give([&] {
        _Compute(function.get(), expression + " = " + text);
        _Compute(function.get(), expression);
        return _Describe("", expression);
    });
}

nxScriptInspector::Outcome nxScriptInspector::Set(unsigned int reference, const std::string& name,
                                                  const std::string& text)
{
    if (reference == 0 || reference > _references.size()) return {std::nullopt, "no such variable"};
    const Reference where = _references[reference - 1];
    if (where.kind != Kind::Value) {
        Outcome outcome = SetExpression(where.level, name, text);
        if (outcome.value) outcome.value->name = name;
        return outcome;
    }
    return _Give([&] {
        lua_State* const L = _thread;
        _PushKept(reference);
        // As variables are named: [1], or a key that is a name.
        if (name.starts_with('[') && name.ends_with(']'))
            _Compute(nullptr, name.substr(1, name.size() - 2));
        else
            lua_pushlstring(L, name.data(), name.size());
        lua_pushvalue(L, -1);
        _Compute(nullptr, text);
        lua_settable(L, -4);
        lua_gettable(L, -2);
        return _Describe(name, "");
    });
}
