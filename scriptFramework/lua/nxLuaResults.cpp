#include "scriptFramework/lua/nxLuaResults.h"

#include <algorithm>
#include <lua.hpp>

#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxScriptCharge.h"

namespace {

void PushVector(lua_State* L, const std::vector<double>& values)
{
    lua_createtable(L, static_cast<int>(values.size()), 0);
    int position = 0;
    for (const double value : values) {
        lua_pushnumber(L, value);
        lua_rawseti(L, -2, ++position);
    }
}

}  // namespace

void nxLuaResults::Add(const std::string& value)
{
    Add(value.c_str());
}

void nxLuaResults::Add(const char* value)
{
    lua_pushstring(_L, value);
    ++_count;
}

void nxLuaResults::Add(bool value)
{
    lua_pushboolean(_L, value);
    ++_count;
}

void nxLuaResults::Add(double value)
{
    lua_pushnumber(_L, value);
    ++_count;
}

void nxLuaResults::Add(unsigned int value)
{
    Add(static_cast<double>(value));
}

void nxLuaResults::Add(long long value)
{
    Add(static_cast<double>(value));
}

void nxLuaResults::Add(unsigned long long value)
{
    Add(static_cast<double>(value));
}

void nxLuaResults::Add(const nxValueWrapper<unsigned int, -1, -2>& value)
{
    if (value.IsValid()) {
        Add(value.GetValue());
    } else {
        AddNull();
    }
}

void nxLuaResults::Add(const nxDecimal& value)
{
    if (value.IsValid()) {
        Add(value.GetAsDouble());
    } else {
        AddNull();
    }
}

void nxLuaResults::Add(const std::vector<double>& values)
{
    if (values.empty()) {
        AddNull();
        return;
    }
    luaL_checkstack(_L, 2, "no room for a result");
    PushVector(_L, values);
    ++_count;
}

void nxLuaResults::Add(const std::vector<std::vector<double>>& matrix)
{
    if (matrix.empty()) {
        AddNull();
        return;
    }
    luaL_checkstack(_L, 3, "no room for a result");
    lua_createtable(_L, static_cast<int>(matrix.size()), 0);
    int position = 0;
    for (const std::vector<double>& row : matrix) {
        PushVector(_L, row);
        lua_rawseti(_L, -2, ++position);
    }
    ++_count;
}

void nxLuaResults::AddNull()
{
    lua_pushnil(_L);
    ++_count;
}

void nxLuaResults::Reserve(std::size_t count)
{
    constexpr std::size_t most = 1 << 20;  // far beyond what a Lua stack can hold
    luaL_checkstack(_L, static_cast<int>(std::min(count, most)), "too many results");
}

bool nxLuaResults::Fail(const std::string& text)
{
    SetError(text);
    return false;
}

const std::shared_ptr<nxScriptAccount>& nxLuaResults::GetAccount() const
{
    return nxLuaState::Of(_L).account;
}

bool nxLuaResults::_Told(bool isAllowed)
{
    return isAllowed || Fail(GetAccount()->GetRefusal());
}

bool nxLuaResults::Allows(nxScriptLimit which, nxScriptLimits::Amount amount)
{
    return _Told(GetAccount()->Allows(which, amount));
}

bool nxLuaResults::Adds(nxScriptLimit which, nxScriptLimits::Amount more)
{
    return _Told(GetAccount()->Adds(which, more));
}

bool nxLuaResults::Keeps(nxScriptLimit which, const std::string& name, std::size_t bytes)
{
    return _Told(GetAccount()->Keeps(which, name, bytes));
}

bool nxLuaResults::Charges(std::size_t bytes)
{
    return _Told(GetAccount()->Charge(bytes));
}

bool nxLuaResults::Sets(nxScriptCharge& charge, std::size_t bytes)
{
    return _Told(charge.Set(GetAccount(), bytes));
}
