#include "scriptFramework/lua/nxScriptSampler.h"

#include <algorithm>
#include <chrono>
#include <lua.hpp>

#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaState.h"

namespace {

constexpr int MostLevels = 128;  // of a stack; those further out are told as one
#ifdef LUAJIT_VERSION
constexpr int OwnLevels = 1;  // of nxLuaState::Protect, below the script's function
#else
constexpr int OwnLevels = 0;
#endif

long long Now()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

int GetDepth(lua_State* thread)
{
    lua_Debug activation;
    int depth = 0;
    while (lua_getstack(thread, depth, &activation))
        ++depth;
    return depth;
}

std::size_t Mix(std::size_t hash, std::size_t value)
{
    return (hash ^ value) * 0x9e3779b97f4a7c15;
}

// "product" of nxAlgoProductObject.
std::string GetShortName(std::string_view name)
{
    constexpr std::string_view head = "nxAlgo", tail = "Object";
    if (name.starts_with(head)) name.remove_prefix(head.size());
    if (name.ends_with(tail)) name.remove_suffix(tail.size());
    std::string text(name);
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

}  // namespace

std::size_t nxScriptSampler::Hash::operator()(const Key& key) const
{
    return Mix(Mix(key.parent + 1, key.place.function), key.place.line);
}

std::size_t nxScriptSampler::Hash::operator()(const std::pair<const void*, int>& key) const
{
    return Mix(reinterpret_cast<std::size_t>(key.first), static_cast<std::size_t>(key.second));
}

nxScriptSampler::nxScriptSampler(unsigned int interval) : _interval(std::max(interval, 1u))
{
    _nodes.push_back({0, _AddFunction({Kind::Callback, "", 0}), 0});
}

// Nanoseconds since the mark, for the call that runs.
long long nxScriptSampler::_Take()
{
    const long long elapsed = Now() - _mark;
    _calls.back().nanoseconds += elapsed;
    return elapsed;
}

void nxScriptSampler::Begin(std::string_view name)
{
    int depth = 0;
    if (!_calls.empty()) {
        _calls.back().callback->waiting += _Take();
        depth = GetDepth(_state->GetState());
    }
    auto found = _callbacks.find(name);
    if (found == _callbacks.end()) {
        const unsigned int function = _AddFunction({Kind::Callback, std::string(name), 0});
        found = _callbacks.emplace(name, Callback{_GetChild(0, {function, 0})}).first;
    }
    ++_nodes[found->second.node].calls;
    _calls.push_back({&found->second, depth});
    _isNative = false;
    _mark = Now();
}

long long nxScriptSampler::End()
{
    _calls.back().callback->waiting += _Take();
    const long long nanoseconds = _calls.back().nanoseconds;
    _calls.pop_back();
    _threads.clear();
    _isNative = false;
    _mark = Now();
    return nanoseconds;
}

void nxScriptSampler::Finish()
{
    for (auto& [name, callback] : _callbacks)
        _nodes[callback.node].nanoseconds += std::exchange(callback.waiting, 0);
}

void nxScriptSampler::OnCount(lua_State* thread, unsigned int instructions)
{
    if (_calls.empty()) return;
    long long& waiting = _calls.back().callback->waiting;
    waiting += _Take();
    Node& node = _nodes[_FindNode(thread)];
    node.instructions += instructions;
    node.nanoseconds += std::exchange(waiting, 0);
    _isNative = false;
    _mark = Now();
}

void nxScriptSampler::OnCall(lua_State* thread, lua_Debug* activation)
{
    if (_calls.empty()) return;
    lua_getinfo(thread, "S", activation);
    _isNative = *activation->what == 'C';
    if (!_isNative) return;
    _calls.back().callback->waiting += _Take();
    _mark = Now();
}

void nxScriptSampler::OnReturn(lua_State* thread, lua_Debug* activation)
{
    if (_calls.empty() || activation->event == LUA_HOOKTAILRET) return;
    lua_getinfo(thread, "S", activation);
    if (*activation->what != 'C') return;
    const long long elapsed = _Take();
    if (std::exchange(_isNative, false)) {
        Node& node = _nodes[_FindNode(thread)];
        node.nanoseconds += elapsed;
        ++node.calls;
    } else {
        _calls.back().callback->waiting += elapsed;
    }
    _mark = Now();
}

// Of the function that runs on the thread. A coroutine's stack begins with itself: who resumed it stands
// still at the end of another one.
unsigned int nxScriptSampler::_FindNode(lua_State* thread)
{
    lua_State* const main = _state->GetState();
    const Call& call = _calls.back();
    const int outer = call.depth + OwnLevels;
    const int levels = outer == 0 ? MostLevels : GetDepth(main) - outer;
    if (thread == main) {
        _threads.clear();
        return _WalkFrom(call.callback->node, main, levels);
    }
    const auto isIt = [thread](const Thread& known) { return known.state == thread; };
    const auto found = std::ranges::find_if(_threads, isIt);
    if (found != _threads.end()) {
        _threads.erase(found + 1, _threads.end());
    } else {
        const unsigned int node = _threads.empty()
                                      ? _WalkFrom(call.callback->node, main, levels)
                                      : _WalkFrom(_threads.back().node, _threads.back().state, MostLevels);
        _threads.push_back({thread, node});
    }
    return _WalkFrom(_threads.back().node, thread, MostLevels);
}

unsigned int nxScriptSampler::_WalkFrom(unsigned int base, lua_State* thread, int levels)
{
    _places.clear();
    lua_Debug activation;
    const int most = std::min(levels, MostLevels);
    Place place;
    for (int level = 0; level < most && lua_getstack(thread, level, &activation); ++level)
        if (_ReadPlace(thread, activation, place)) _places.push_back(place);
    unsigned int node = base;
    if (lua_getstack(thread, MostLevels, &activation)) {
        const auto [known, isNew] = _natives.try_emplace("(calls further out)", 0);
        if (isNew) known->second = _AddFunction({Kind::Library, known->first, 0});
        node = _GetChild(node, {known->second, 0});
    }
    for (auto called = _places.rbegin(); called != _places.rend(); ++called)
        node = _GetChild(node, *called);
    return node;
}

unsigned int nxScriptSampler::_GetChild(unsigned int parent, Place place)
{
    const auto [child, isNew] = _children.try_emplace({parent, place}, _nodes.size());
    if (isNew) _nodes.push_back({parent, place.function, place.line});
    return child->second;
}

// False for the place that a tail call left.
bool nxScriptSampler::_ReadPlace(lua_State* thread, lua_Debug& activation, Place& place)
{
    lua_getinfo(thread, "Sl", &activation);
    if (*activation.what == 't') return false;
    if (*activation.what == 'C') {
        place = {_FindNative(thread, activation), 0};
        return true;
    }
    const bool isOfScript = activation.source == _state->watch->GetChunk();
    place.function = _FindScriptFunction(thread, activation);
    place.line = isOfScript ? static_cast<unsigned int>(std::max(activation.currentline, 0)) : 0;
    return true;
}

unsigned int nxScriptSampler::_FindScriptFunction(lua_State* thread, lua_Debug& activation)
{
    const bool isOfScript = activation.source == _state->watch->GetChunk();
    const auto [known, isNew] = _known.try_emplace({activation.source, activation.linedefined}, 0);
    if (isNew)
        known->second = _AddFunction({isOfScript ? Kind::Script : Kind::Library,
                                      *activation.what == 'm' ? "(main chunk)" : "",
                                      static_cast<unsigned int>(std::max(activation.linedefined, 0))});
    Function& function = _functions[known->second];
    // Who is called from outside has no name there; another caller may know one.
    if (function.name.empty() && lua_getinfo(thread, "n", &activation) && activation.name != nullptr)
        function.name = activation.name;
    return known->second;
}

unsigned int nxScriptSampler::_FindNative(lua_State* thread, lua_Debug& activation)
{
    const auto [known, isNew] = _natives.try_emplace(_NameNative(thread, activation), 0);
    if (isNew) known->second = _AddFunction({Kind::Native, known->first, 0});
    return known->second;
}

std::string nxScriptSampler::_NameNative(lua_State* thread, lua_Debug& activation)
{
    if (!_hasLibraries) _ReadLibraries();
    lua_getinfo(thread, "f", &activation);
    std::string name;
    if (const auto library = _libraries.find(lua_topointer(thread, -1)); library != _libraries.end())
        name = library->second;
    const lua_CFunction function = lua_tocfunction(thread, -1);
    for (const nxLuaState::ClassReferences& known : _state->GetClasses())
        if (name.empty() && known.type != nullptr && known.type->IsDispatcher(function))
            name = _NameMember(thread, activation, *known.type);
    lua_pop(thread, 1);
    if (!name.empty()) return name;
    lua_getinfo(thread, "n", &activation);
    return activation.name == nullptr ? "(native)" : activation.name;
}

// "product:createOrder", "price.bidPrice". Its closure is at the top of the stack.
std::string nxScriptSampler::_NameMember(lua_State* thread, lua_Debug& activation, const nxLuaClass& type)
{
    const std::string owner = GetShortName(type.GetName());
    if (lua_getupvalue(thread, -1, 1) != nullptr) {
        const auto row = static_cast<std::size_t>(lua_tonumber(thread, -1));
        lua_pop(thread, 1);
        return row < type.GetFunctions().size() ? owner + ":" + type.GetFunctions()[row] : owner;
    }
    constexpr int key = 2;
    if (lua_getlocal(thread, &activation, key) == nullptr) return owner;
    const bool isText = lua_type(thread, -1) == LUA_TSTRING;
    std::string name = isText ? owner + "." + lua_tostring(thread, -1) : owner + "[]";
    lua_pop(thread, 1);
    return name;
}

// Lua's own functions, by the names under which the state has them when the script begins.
void nxScriptSampler::_ReadLibraries()
{
    _hasLibraries = true;
    lua_State* const L = _state->GetState();
    luaL_checkstack(L, 6, "no room to look");
    const auto read = [&](const std::string& prefix) {
        for (lua_pushnil(L); lua_next(L, -2); lua_pop(L, 1))
            if (lua_iscfunction(L, -1) && lua_type(L, -2) == LUA_TSTRING)
                _libraries.emplace(lua_topointer(L, -1), prefix + lua_tostring(L, -2));
    };
    lua_pushvalue(L, LUA_GLOBALSINDEX);
    read("");
    for (const char* const library : {"string", "table", "math", "os", "io", "coroutine", "debug"}) {
        lua_pushstring(L, library);
        lua_rawget(L, -2);
        if (lua_istable(L, -1)) read(std::string(library) + ".");
        lua_pop(L, 1);
    }
    lua_pop(L, 1);
}

unsigned int nxScriptSampler::_AddFunction(Function function)
{
    _functions.push_back(std::move(function));
    return static_cast<unsigned int>(_functions.size() - 1);
}
