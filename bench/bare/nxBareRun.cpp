// The least that a crossover of two averages over a bars file costs in Lua: one callback a row over the raw C
// interface, with no library between. Usage: nx_bare_bars BARS SCRIPT; prints what the script's OnShutdown
// gives. Rows are believed, not judged.

#include <charconv>
#include <cstdio>
#include <cstring>
#include <lua.hpp>
#include <vector>

namespace {

struct Mean
{
    explicit Mean(std::size_t period) : values(period) {}

    void Push(double value)
    {
        sum += value - values[next];
        values[next] = value;
        next = next + 1 == values.size() ? 0 : next + 1;
        if (count < values.size()) ++count;
    }

    std::vector<double> values;
    std::size_t next = 0;
    std::size_t count = 0;
    double sum = 0.0;
};

int GetValue(lua_State* L)
{
    const Mean& mean = *static_cast<const Mean*>(lua_touserdata(L, lua_upvalueindex(1)));
    if (std::strcmp(luaL_checkstring(L, 2), "value") != 0 || mean.count < mean.values.size()) {
        lua_pushnil(L);
    } else {
        lua_pushnumber(L, mean.sum / static_cast<double>(mean.count));
    }
    return 1;
}

void SetGlobal(lua_State* L, const char* name, Mean& mean)
{
    lua_newtable(L);
    lua_pushlightuserdata(L, &mean);
    lua_pushcclosure(L, GetValue, 1);
    lua_setfield(L, -2, "getValue");
    lua_setglobal(L, name);
}

// The five numbers of a row stand behind its second comma; the close is the fourth.
double ReadClose(const char* row, const char* end)
{
    double numbers[5] = {};
    long long time = 0;
    std::from_chars(row, end, time);
    const char* cell = std::strchr(std::strchr(row, ',') + 1, ',');
    for (double& number : numbers)
        cell = std::from_chars(cell + 1, end, number).ptr;
    return numbers[3];
}

}  // namespace

int main(int count, char** arguments)
{
    std::FILE* const file = count == 3 ? std::fopen(arguments[1], "r") : nullptr;
    if (file == nullptr) return 2;
    Mean fast(10), slow(30);
    lua_State* const L = luaL_newstate();
    luaL_openlibs(L);
    SetGlobal(L, "fast", fast);
    SetGlobal(L, "slow", slow);
    if (luaL_dofile(L, arguments[2]) != 0) return 2;
    lua_getglobal(L, "OnPrice");
    const int callback = luaL_ref(L, LUA_REGISTRYINDEX);
    char row[512];
    if (std::fgets(row, sizeof row, file) == nullptr) return 2;
    while (fgets_unlocked(row, sizeof row, file) != nullptr) {
        const double close = ReadClose(row, row + std::strlen(row));
        fast.Push(close);
        slow.Push(close);
        lua_rawgeti(L, LUA_REGISTRYINDEX, callback);
        if (lua_pcall(L, 0, 0, 0) != 0) return 1;
    }
    lua_getglobal(L, "OnShutdown");
    if (lua_pcall(L, 0, 1, 0) != 0) return 1;
    std::puts(lua_tostring(L, -1));
    lua_close(L);
    return std::fclose(file);
}
