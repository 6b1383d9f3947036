#include "scriptFramework/lua/nxLuaParameter.h"

#include <charconv>
#include <cmath>
#include <lua.hpp>

#include "scriptFramework/lua/nxLuaState.h"

namespace {

// Appends the numbers at 1, 2, ... of the table at index up to a nil; false at a value that is not numeric.
bool ReadNumbers(lua_State* L, int index, std::vector<double>& out)
{
    luaL_checkstack(L, 2, "no room for an element");
    for (int i = 1;; ++i) {
        lua_rawgeti(L, index, i);
        if (lua_isnil(L, -1) || !lua_isnumber(L, -1)) break;
        out.push_back(lua_tonumber(L, -1));
        lua_pop(L, 1);
    }
    const bool complete = lua_isnil(L, -1);
    lua_pop(L, 1);
    return complete;
}

// The text of a whole number on top of the stack, which is the same that Lua makes of it, in a tenth of the
// time.
bool SetFromWhole(lua_State* L, std::string& out)
{
    constexpr double limit = 1e14;  // from here on Lua's own has an exponent
    if (lua_type(L, -1) != LUA_TNUMBER) return false;
    const double number = lua_tonumber(L, -1);
    if (!(number >= 1 && number < limit && number == std::floor(number))) return false;
    char digits[16];
    out.assign(digits, std::to_chars(digits, std::end(digits), static_cast<long long>(number)).ptr);
    return true;
}

}  // namespace

long long nxLuaTruncateToLong(double number)
{
    constexpr double limit = 9223372036854775808.0;  // 2^63
    return number >= -limit && number < limit ? static_cast<long long>(number) : 0;
}

unsigned int nxLuaTruncate(double number)
{
    return static_cast<unsigned int>(nxLuaTruncateToLong(number));
}

bool nxLuaParameter::IsValid() const
{
    return _type != LUA_TNONE && _type != LUA_TNIL;
}

bool nxLuaParameter::IsNull() const
{
    return _type == LUA_TNIL;
}

bool nxLuaParameter::IsTable() const
{
    return _type == LUA_TTABLE;
}

const char* nxLuaParameter::GetType() const
{
    static constexpr const char* names[] = {"NONE",   "NIL",   "BOOLEAN",  "LIGHT_USERDATA", "NUMBER",
                                            "STRING", "TABLE", "FUNCTION", "USERDATA",       "THREAD"};
    return _type >= LUA_TNONE && _type <= LUA_TTHREAD ? names[_type - LUA_TNONE] : "UNKNOWN";
}

double nxLuaParameter::GetNumber() const
{
    return _index == 0 ? 0.0 : luaL_checknumber(_L, _index);
}

const char* nxLuaParameter::GetString() const
{
    if (_type == LUA_TSTRING) return lua_tostring(_L, _index);
    return _index == 0 ? nullptr : luaL_checkstring(_L, _index);
}

bool nxLuaParameter::GetBool() const
{
    if (_index == 0) return false;
    luaL_checktype(_L, _index, LUA_TBOOLEAN);
    return lua_toboolean(_L, _index) == 1;
}

// Leaves the value on the stack: parameters are addressed by absolute index, and the stack goes with the
// call.
bool nxLuaParameter::_FetchNamedValue(const std::string& key) const
{
    if (!IsTable()) return false;
    luaL_checkstack(_L, 2, "no room for a named value");
    lua_pushstring(_L, key.c_str());
    lua_rawget(_L, _index);
    return true;
}

bool nxLuaParameter::GetNamedValue(const std::string& key, double& out) const
{
    if (!_FetchNamedValue(key) || lua_type(_L, -1) != LUA_TNUMBER) return false;
    out = lua_tonumber(_L, -1);
    return true;
}

bool nxLuaParameter::GetNamedValue(const std::string& key, bool& out) const
{
    if (!_FetchNamedValue(key) || lua_type(_L, -1) != LUA_TBOOLEAN) return false;
    out = lua_toboolean(_L, -1) != 0;
    return true;
}

bool nxLuaParameter::GetNamedValue(const std::string& key, std::string& out) const
{
    if (!_FetchNamedValue(key)) return false;
    if (SetFromWhole(_L, out)) return true;
    size_t length = 0;
    const char* text = lua_tolstring(_L, -1, &length);
    out.assign(text == nullptr ? "" : text, length);
    return !out.empty();
}

bool nxLuaParameter::GetNames(std::string_view* out, std::size_t room, std::size_t& count) const
{
    count = 0;
    if (!IsTable()) return true;
    luaL_checkstack(_L, 2, "no room for a name and a value");
    lua_pushnil(_L);
    while (lua_next(_L, _index) != 0) {
        lua_pop(_L, 1);
        if (lua_type(_L, -1) != LUA_TSTRING) continue;
        if (count == room) {
            lua_pop(_L, 1);
            return false;
        }
        std::size_t length = 0;
        const char* const name = lua_tolstring(_L, -1, &length);
        out[count++] = {name, length};
    }
    return true;
}

bool nxLuaParameter::GetAsDoubleVector(std::vector<double>& out) const
{
    out.clear();
    return IsTable() && ReadNumbers(_L, _index, out);
}

bool nxLuaParameter::GetAsMatrix(std::vector<std::vector<double>>& out, std::string& error) const
{
    out.clear();
    if (!IsTable()) return false;
    luaL_checkstack(_L, 2, "no room for a row");
    std::size_t bytes = 0;
    for (int i = 1;; ++i) {
        lua_rawgeti(_L, _index, i);
        if (lua_isnil(_L, -1)) break;
        if (!lua_istable(_L, -1)) {
            lua_pop(_L, 1);
            error = "not a matrix";
            return false;
        }
        std::vector<double>& row = out.emplace_back();
        const bool complete = ReadNumbers(_L, lua_gettop(_L), row);
        lua_pop(_L, 1);
        bytes += sizeof row + row.size() * sizeof(double);
        Require(GetAccount()->HasRoom(bytes));
        if (!complete) {
            error = "index is not a number";
            return false;
        }
    }
    lua_pop(_L, 1);
    return true;
}

bool nxLuaParameter::GetAsNameValueMap(std::map<std::string, std::string>& out) const
{
    out.clear();
    if (!IsTable()) return false;
    luaL_checkstack(_L, 3, "no room for a name and a value");
    const int top = lua_gettop(_L);
    std::size_t bytes = 0;
    lua_pushnil(_L);
    while (lua_next(_L, _index) != 0) {
        // Conversion changes a number where it lies, and lua_next must find its key as it was.
        lua_pushvalue(_L, -2);
        const char* name = lua_tostring(_L, -1);
        const char* value = lua_tostring(_L, -2);
        if (name == nullptr || value == nullptr) {
            lua_settop(_L, top);
            return false;
        }
        bytes += lua_objlen(_L, -1) + lua_objlen(_L, -2);
        Require(GetAccount()->HasRoom(bytes));
        out[name] = value;
        lua_pop(_L, 2);
    }
    return true;
}

const std::shared_ptr<nxScriptAccount>& nxLuaParameter::GetAccount() const
{
    return nxLuaState::Of(_L).account;
}

void nxLuaParameter::Require(bool isAllowed) const
{
    if (!isAllowed) luaL_error(_L, "%s", GetAccount()->GetRefusal().c_str());
}
