#include "scriptFramework/lua/nxLuaState.h"

#include <algorithm>
#include <lua.hpp>
#include <new>
#include <stdexcept>
#include <utility>

#include "base/values/nxExactRandom.h"
#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaErrorText.h"
#include "scriptFramework/lua/nxLuaLooks.h"
#include "scriptFramework/lua/nxLuaPatternGuard.h"
#include "scriptFramework/lua/nxLuaTableNote.h"
#include "scriptFramework/lua/nxLuaUnpackGuard.h"
#include "scriptFramework/lua/nxScriptProfile.h"

namespace {

void* LuaAllocator(void* userData, void* block, size_t oldSize, size_t newSize)
{
    nxLuaState& state = *static_cast<nxLuaState*>(userData);
    void* const result =
        state.GetPool().Reallocate(block, nxLuaTableNote::AddRoom(oldSize), nxLuaTableNote::AddRoom(newSize));
    if (nxLuaTableNote::AddRoom(newSize) != newSize && result != nullptr) nxLuaTableNote::Of(result) = {};
    return result;
}

// An error that Lua raised outside any protected call: a lack of memory while an argument is pushed, or a
// script's metamethod on its globals. By then Lua has closed what ran and emptied its stack.
class LuaPanic : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

int OnPanic(lua_State* L)
{
    throw LuaPanic(nxLuaErrorText(L));
}

}  // namespace

nxLuaState::nxLuaState() : account(std::make_shared<nxScriptAccount>(_pool))
{
    _L = lua_newstate(LuaAllocator, this);
    if (_L == nullptr) throw std::bad_alloc();
    lua_atpanic(_L, OnPanic);
    std::string error;
    if (Protect([](void* state) { static_cast<nxLuaState*>(state)->_Open(); }, this, error)) return;
    Close();
    throw std::runtime_error(error);
}

// May raise Lua's errors.
void nxLuaState::_Open()
{
    _CheckTables();
    luaL_openlibs(_L);
    nxLuaWatchLooks(_L);
    nxLuaGuardPatterns(_L);
    nxLuaGuardUnpack(_L);
    TuneCollector();
    // Loads leave the class metatables on the stack and look-ups of callbacks their values.
    luaL_checkstack(_L, 128, "no room for the engine");
}

// A Lua whose tables have another size has its notes elsewhere.
void nxLuaState::_CheckTables()
{
    const std::size_t before = _pool.GetHeapBytes();
    lua_newtable(_L);
    const std::size_t bytes = _pool.GetHeapBytes() - before;
    lua_pop(_L, 1);
    if (nxLuaTableNote::IsUsed && bytes != nxLuaTableNote::AddRoom(nxLuaTableNote::TableBytes))
        luaL_error(_L, "the tables of this Lua have another size");
}

nxLuaState::~nxLuaState()
{
    Close();
    account->Close();
}

void nxLuaState::Close()
{
    if (_L != nullptr) lua_close(_L);
    _L = nullptr;
}

nxLuaState& nxLuaState::Of(lua_State* L)
{
    void* userData = nullptr;
    if (lua_getallocf(L, &userData) != LuaAllocator) luaL_error(L, "not a state of nxLuaEngine");
    return *static_cast<nxLuaState*>(userData);
}

void nxLuaState::MakeRoom(int values)
{
    if (lua_checkstack(_L, values)) return;
    lua_settop(_L, 0);
    luaL_checkstack(_L, values, "no room for the engine");
}

#ifdef LUAJIT_VERSION

// On this engine an error that nothing protects is an exception without a type, which the next catch (...) of
// anybody takes. So it gets its protected call, at the price of some speed.
bool nxLuaState::Protect(void (*body)(void* context), void* context, std::string& error)
{
    struct Call
    {
        void (*body)(void* context);
        void* context;
    } call{body, context};
    const auto run = [](lua_State* L) {
        const Call& what = *static_cast<const Call*>(lua_touserdata(L, 1));
        what.body(what.context);
        return 0;
    };
    if (lua_cpcall(_L, run, &call) == 0) return true;
    error = nxLuaErrorText(_L);
    lua_pop(_L, 1);
    return false;
}

#else

bool nxLuaState::Protect(void (*body)(void* context), void* context, std::string& error)
{
    try {
        try {
            body(context);
            return true;
        } catch (const LuaPanic&) {
            throw;
        } catch (...) {
            // Not Lua's own, which panics here: the host's. Lua must close the frames it left open, as for an
            // error.
            lua_pushliteral(_L, "C++ exception");
            lua_error(_L);
        }
    } catch (const LuaPanic& panic) {
        error = panic.what();
    }
    return false;
}

#endif

void nxLuaState::TuneCollector()
{
    constexpr std::size_t worthwhile = 1 << 19;  // bytes of garbage; more of it leaves the processor's caches
    const std::size_t heap = _pool.GetHeapBytes() + 1;
    std::size_t garbage = std::clamp<std::size_t>(100 * worthwhile / heap, 200, 900);  // percent of the heap
    // Nobody collects when a limit is met, so garbage must not come to fill it: it may have half of what is
    // free.
    if (const std::size_t limit = account->GetLimits().memory; limit != 0) {
        const std::size_t free = limit - std::min(limit, _pool.GetBytesInUse());
        garbage = std::clamp<std::size_t>(50 * (free / heap), 50, garbage);
    }
    lua_gc(_L, LUA_GCSETPAUSE, static_cast<int>(100 + garbage));
}

bool nxLuaState::IsClassMetatable(const void* table) const
{
    const auto isIt = [table](const ClassReferences& known) { return known.identity == table; };
    return table != nullptr && std::ranges::any_of(_classes, isIt);
}

// A finalizer that does nothing would still be called for every wrapper that dies, so the metatables have
// theirs only once a script can look.
void nxLuaState::ExposeMetatables(lua_State* L)
{
    if (_metatablesExposed || IsStrict()) return;
    _metatablesExposed = true;
    EndLoans(L);
    luaL_checkstack(L, 3, "no room for a metatable");
    for (const ClassReferences& known : _classes) {
        if (known.identity == nullptr) continue;
        lua_rawgeti(L, LUA_REGISTRYINDEX, known.metatable);
        lua_pushliteral(L, "__gc");
        lua_pushcfunction(L, nxLuaClass::CollectNothing);
        lua_rawset(L, -3);
        lua_pop(L, 1);
    }
}

// The wrapper that a call has at this moment is its own from now on.
void nxLuaState::EndLoans(lua_State* L)
{
    if (!std::exchange(_canLend, false)) return;
    for (ClassReferences& known : _classes) {
        if (known.loan.reference != 0) luaL_unref(L, LUA_REGISTRYINDEX, known.loan.reference);
        known.loan = {};
    }
}
