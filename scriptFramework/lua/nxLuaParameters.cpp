#include "scriptFramework/lua/nxLuaParameters.h"

#include <algorithm>
#include <lua.hpp>

nxLuaParameters::nxLuaParameters(lua_State* L, bool setter) : _L(L), _base(setter ? 2 : 1)
{
    _count = static_cast<unsigned int>(std::max(0, lua_gettop(L) - _base));
    _cursor._L = L;
}

const nxLuaParameter& nxLuaParameters::Parameter(unsigned int number)
{
    const bool given = number >= 1 && number <= _count;
    _cursor._index = given ? static_cast<int>(number) + _base : 0;
    _cursor._type = given ? lua_type(_L, _cursor._index) : LUA_TNONE;
    return _cursor;
}
