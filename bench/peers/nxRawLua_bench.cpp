// The least that the same event costs over the raw C interface: one userdata made once and used for every
// event, its metatable's __index a chain of string comparisons, no wrapper, no lock, no error text.
#include <benchmark/benchmark.h>

#include <cstring>
#include <lua.hpp>
#include <string>

#include "base/records/nxPrice.h"
#include "bench/nxBenchScripts.h"

namespace {

nxPrice* Price(lua_State* L)
{
    return *static_cast<nxPrice**>(lua_touserdata(L, 1));
}

int IsBid(lua_State* L)
{
    lua_pushboolean(L, !Price(L)->GetBidPrice().IsNoChange());
    return 1;
}

int Index(lua_State* L)
{
    const char* key = lua_tostring(L, 2);
    if (std::strcmp(key, "bidPrice") == 0) {
        lua_pushnumber(L, Price(L)->GetBidPrice().GetAsDouble());
    } else if (std::strcmp(key, "askPrice") == 0) {
        lua_pushnumber(L, Price(L)->GetAskPrice().GetAsDouble());
    } else if (std::strcmp(key, "bidVolume") == 0) {
        lua_pushnumber(L, Price(L)->GetBidVolume().GetValue());
    } else if (std::strcmp(key, "isBid") == 0) {
        lua_pushvalue(L, lua_upvalueindex(1));
    } else {
        lua_pushnil(L);
    }
    return 1;
}

void RawLua(benchmark::State& state, const std::string& script)
{
    nxPrice price;
    price.SetBidPrice(nxDecimal(10025, 100, 2));
    price.SetAskPrice(nxDecimal(10050, 100, 2));
    price.SetBidVolume(5u);
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    luaL_newmetatable(L, "price");
    lua_pushcfunction(L, IsBid);
    lua_pushcclosure(L, Index, 1);
    lua_setfield(L, -2, "__index");
    if (luaL_dostring(L, ("total = 0 " + script).c_str()) != 0) state.SkipWithError(lua_tostring(L, -1));
    *static_cast<nxPrice**>(lua_newuserdata(L, sizeof(nxPrice*))) = &price;
    luaL_getmetatable(L, "price");
    lua_setmetatable(L, -2);
    const int object = luaL_ref(L, LUA_REGISTRYINDEX);
    for (auto _ : state) {
        lua_getglobal(L, "OnPrice");
        lua_rawgeti(L, LUA_REGISTRYINDEX, object);
        if (lua_pcall(L, 1, 0, 0) != 0) state.SkipWithError(lua_tostring(L, -1));
    }
    lua_close(L);
}
BENCHMARK_CAPTURE(RawLua, whole, nxBenchScripts::Whole)->Name("peer/raw_lua_whole");
BENCHMARK_CAPTURE(RawLua, heap, nxBenchScripts::GetHeap(170000) + nxBenchScripts::Whole)
    ->Name("peer/raw_lua_whole_16MB_live");
BENCHMARK_CAPTURE(RawLua, kept, nxBenchScripts::Kept)->Name("peer/raw_lua_kept");

}  // namespace
