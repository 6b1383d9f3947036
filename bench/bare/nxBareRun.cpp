// The least that a script over recorded data costs in Lua: one callback a row over the raw C interface, with
// no library between. Usage: nx_bare_run DATA SCRIPT, with bars or quotes as algoserver writes them; prints
// what the script's OnShutdown gives. Rows are believed, not judged. Scripts find what they use as globals:
// `fast` and `slow`, averages of the closes, and `product`, whose orders are only counted.

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

struct Price
{
    double bid = 0.0, ask = 0.0, last = 0.0;
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

int GetPrice(lua_State* L)
{
    const Price& price = **static_cast<Price**>(lua_touserdata(L, 1));
    const char* const name = luaL_checkstring(L, 2);
    if (std::strcmp(name, "bidPrice") == 0) {
        lua_pushnumber(L, price.bid);
    } else if (std::strcmp(name, "askPrice") == 0) {
        lua_pushnumber(L, price.ask);
    } else if (std::strcmp(name, "lastPrice") == 0) {
        lua_pushnumber(L, price.last);
    } else {
        lua_pushnil(L);
    }
    return 1;
}

int Work(lua_State* L)
{
    lua_getfield(L, 2, "volume");
    luaL_checknumber(L, -1);
    return 0;
}

int CreateOrder(lua_State* L)
{
    lua_getfield(L, 2, "side");
    lua_getfield(L, 2, "type");
    luaL_checkstring(L, -1);
    luaL_checkstring(L, -2);
    lua_newtable(L);
    lua_pushcfunction(L, Work);
    lua_setfield(L, -2, "work");
    return 1;
}

void SetGlobal(lua_State* L, const char* name, const char* function, lua_CFunction call, void* of)
{
    lua_newtable(L);
    lua_pushlightuserdata(L, of);
    lua_pushcclosure(L, call, 1);
    lua_setfield(L, -2, function);
    lua_setglobal(L, name);
}

// One object for all events; its place in the registry.
int MakePrice(lua_State* L, Price& price)
{
    *static_cast<Price**>(lua_newuserdata(L, sizeof(Price*))) = &price;
    lua_newtable(L);
    lua_pushcfunction(L, GetPrice);
    lua_setfield(L, -2, "__index");
    lua_setmetatable(L, -2);
    return luaL_ref(L, LUA_REGISTRYINDEX);
}

// The numbers of a row stand behind its second comma; an empty cell leaves its number alone.
void ReadNumbers(const char* row, const char* end, double* numbers, std::size_t count)
{
    long long time = 0;
    std::from_chars(row, end, time);
    const char* cell = std::strchr(std::strchr(row, ',') + 1, ',');
    for (std::size_t i = 0; i < count && *cell == ','; ++i)
        cell = std::from_chars(cell + 1, end, numbers[i]).ptr;
}

}  // namespace

int main(int count, char** arguments)
{
    std::FILE* const file = count == 3 ? std::fopen(arguments[1], "r") : nullptr;
    if (file == nullptr) return 2;
    Mean fast(10), slow(30);
    Price price;
    lua_State* const L = luaL_newstate();
    luaL_openlibs(L);
    SetGlobal(L, "fast", "getValue", GetValue, &fast);
    SetGlobal(L, "slow", "getValue", GetValue, &slow);
    SetGlobal(L, "product", "createOrder", CreateOrder, nullptr);
    const int object = MakePrice(L, price);
    if (luaL_dofile(L, arguments[2]) != 0) return 2;
    lua_getglobal(L, "OnPrice");
    const int callback = luaL_ref(L, LUA_REGISTRYINDEX);
    char row[512];
    if (std::fgets(row, sizeof row, file) == nullptr) return 2;
    const bool isOfBars = std::strstr(row, "close") != nullptr;
    double numbers[6] = {};
    while (fgets_unlocked(row, sizeof row, file) != nullptr) {
        ReadNumbers(row, row + std::strlen(row), numbers, isOfBars ? 5 : 6);
        if (isOfBars) {
            price.last = numbers[3];
            fast.Push(price.last);
            slow.Push(price.last);
        } else {
            price = {numbers[0], numbers[2], numbers[4]};
        }
        lua_rawgeti(L, LUA_REGISTRYINDEX, callback);
        lua_rawgeti(L, LUA_REGISTRYINDEX, object);
        if (lua_pcall(L, 1, 0, 0) != 0) return 1;
    }
    lua_getglobal(L, "OnShutdown");
    if (lua_pcall(L, 0, 1, 0) != 0) return 1;
    std::puts(lua_tostring(L, -1));
    lua_close(L);
    return std::fclose(file);
}
