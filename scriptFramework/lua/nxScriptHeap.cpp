#include "scriptFramework/lua/nxScriptHeap.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <lua.hpp>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "scriptFramework/lua/nxLuaState.h"

namespace {

// Bytes that Lua takes on 64 bits.
#ifdef LUAJIT_VERSION
constexpr std::size_t OfPlace = 8, OfNode = 24;
#else
constexpr std::size_t OfPlace = 16, OfNode = 40;
#endif
constexpr std::size_t OfTable = 64, OfText = 25, OfFunction = 40, OfUpvalue = 48, OfUserdata = 40,
                      OfThread = 1024;

constexpr std::size_t MostNames = 64;  // entries of a table whose names go on a path
constexpr int MostDepth = 8;           // names of a path
constexpr std::size_t MostPaths = 20'000;
constexpr std::size_t Least = 256;  // bytes of a path that is told

bool IsCollected(int type)
{
    return type == LUA_TTABLE || type == LUA_TFUNCTION || type == LUA_TSTRING || type == LUA_TUSERDATA ||
           type == LUA_TTHREAD;
}

// Goes through the values by their distance from the roots. Those that are still to be looked at wait in a
// table, at `Queue` of the stack.
class Walk
{
public:
    Walk(lua_State* L, nxScriptHeap& heap) : _L(L), _heap(heap) {}

    void Run()
    {
        lua_newtable(_L);
        _queue = lua_gettop(_L);
        _AddRoot("_G", LUA_GLOBALSINDEX);
        _Drain();
        _AddRoot("(the library)", LUA_REGISTRYINDEX);
        _Drain();
        lua_settop(_L, _queue - 1);
        for (Path& path : _paths)
            if (path.told.bytes >= Least) _heap.paths.push_back(std::move(path.told));
    }

private:
    struct Path
    {
        nxScriptHeap::Path told;
        int depth = 0;
    };

    void _AddRoot(const char* name, int index)
    {
        _paths.push_back({{name}});
        lua_pushvalue(_L, index);
        _Add(_paths.size() - 1);
    }

    void _Count(std::size_t path, nxScriptHeap::Kind kind, std::size_t bytes)
    {
        ++_heap.kinds[kind].count;
        _heap.kinds[kind].bytes += bytes;
        _paths[path].told.bytes += bytes;
    }

    // Takes the value at the top, which the path leads to.
    void _Add(std::size_t path)
    {
        const int type = lua_type(_L, -1);
        if (!IsCollected(type) || !_seen.insert(_GetIdentity()).second) return lua_pop(_L, 1);
        if (type == LUA_TSTRING) {
            _Count(path, nxScriptHeap::Texts, OfText + lua_objlen(_L, -1));
            return lua_pop(_L, 1);
        }
        _waiting.push_back(path);
        lua_rawseti(_L, _queue, static_cast<int>(_waiting.size()));
    }

    const void* _GetIdentity() const
    {
        return lua_type(_L, -1) == LUA_TSTRING ? lua_tostring(_L, -1) : lua_topointer(_L, -1);
    }

    void _Drain()
    {
        while (_next < _waiting.size()) {
            const std::size_t path = _waiting[_next++];
            lua_rawgeti(_L, _queue, static_cast<int>(_next));
            switch (lua_type(_L, -1)) {
                case LUA_TTABLE:
                    _LookAtTable(path);
                    break;
                case LUA_TFUNCTION:
                    _LookAtFunction(path);
                    break;
                case LUA_TUSERDATA:
                    _Count(path, nxScriptHeap::Userdata, OfUserdata + lua_objlen(_L, -1));
                    break;
                default:
                    _LookAtThread(path);
            }
            if (lua_getmetatable(_L, -1)) _Add(_GetChild(path, ".(metatable)"));
            lua_pop(_L, 1);
        }
    }

    // The path that goes on by the name, or the path itself where names end.
    std::size_t _GetChild(std::size_t path, const std::string& name)
    {
        if (_paths[path].depth == MostDepth || _paths.size() >= MostPaths) return path;
        std::string whole = _paths[path].told.name + name;
        const auto [known, isNew] = _names.try_emplace(whole, _paths.size());
        if (isNew) _paths.push_back({{std::move(whole)}, _paths[path].depth + 1});
        return known->second;
    }

    void _LookAtTable(std::size_t path)
    {
        const std::size_t list = lua_objlen(_L, -1);
        std::size_t places = 0, entries = 0;
        for (lua_pushnil(_L); lua_next(_L, -2); lua_pop(_L, 1)) {
            ++entries;
            if (lua_type(_L, -2) != LUA_TNUMBER) continue;
            const double key = lua_tonumber(_L, -2);
            if (key >= 1 && key <= static_cast<double>(list) && key == std::floor(key)) ++places;
        }
        const std::size_t nodes = entries - places;
        _Count(path, nxScriptHeap::Tables,
               OfTable + (places == 0 ? 0 : OfPlace * std::bit_ceil(places)) +
                   (nodes == 0 ? 0 : OfNode * std::bit_ceil(nodes)));
        std::size_t& told = _paths[path].told.entries;
        told = std::max(told, entries);
        for (lua_pushnil(_L); lua_next(_L, -2);) {
            const bool isNamed = entries <= MostNames && lua_type(_L, -2) == LUA_TSTRING &&
                                 lua_type(_L, -1) != LUA_TSTRING && IsCollected(lua_type(_L, -1));
            _Add(isNamed ? _GetChild(path, std::string(".") + lua_tostring(_L, -2)) : path);
            lua_pushvalue(_L, -1);
            _Add(path);
        }
    }

    void _LookAtFunction(std::size_t path)
    {
        int upvalues = 0;
        while (const char* const name = lua_getupvalue(_L, -1, upvalues + 1)) {
            ++upvalues;
            const bool isOnPath =
                *name != '\0' && lua_type(_L, -1) != LUA_TSTRING && IsCollected(lua_type(_L, -1));
            _Add(isOnPath ? _GetChild(path, std::string(": ") + name) : path);
        }
        _Count(path, nxScriptHeap::Functions, OfFunction + OfUpvalue * static_cast<std::size_t>(upvalues));
        lua_getfenv(_L, -1);
        _Add(path);
    }

    // Variables of a coroutine that waits.
    void _LookAtThread(std::size_t path)
    {
        _Count(path, nxScriptHeap::Coroutines, OfThread);
        lua_State* const thread = lua_tothread(_L, -1);
        if (thread == nullptr || thread == _L || !lua_checkstack(thread, 1)) return;
        lua_Debug activation;
        for (int level = 0; lua_getstack(thread, level, &activation); ++level) {
            for (int place = 1; const char* const name = lua_getlocal(thread, &activation, place); ++place) {
                lua_xmove(thread, _L, 1);
                _Add(*name == '(' ? path : _GetChild(path, std::string(": ") + name));
            }
        }
    }

    lua_State* const _L;
    nxScriptHeap& _heap;
    int _queue = 0;
    std::vector<Path> _paths;
    std::unordered_map<std::string, std::size_t> _names;
    std::unordered_set<const void*> _seen;
    std::vector<std::size_t> _waiting;  // the paths of what the queue holds
    std::size_t _next = 0;
};

}  // namespace

void nxScriptHeap::Read(nxLuaState& state)
{
    lua_State* const L = state.GetState();
    lua_gc(L, LUA_GCCOLLECT, 0);
    bytes = state.GetPool().GetHeapBytes();
    const auto run = [](lua_State* thread) {
        luaL_checkstack(thread, 32, "no room to look");
        Walk(thread, *static_cast<nxScriptHeap*>(lua_touserdata(thread, 1))).Run();
        return 0;
    };
    lua_gc(L, LUA_GCSTOP, 0);  // no finalizer may run while values are looked at
    const int status = lua_cpcall(L, run, this);
    lua_gc(L, LUA_GCRESTART, 0);
    if (status != 0) lua_error(L);
}
