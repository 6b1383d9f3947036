#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "scriptFramework/lua/nxLuaParameter.h"

// The values of a script's table by their names. The names that the table has are looked at once, so that
// those that it lacks, mostly nearly all that a call knows, cost a comparison each and no look into Lua. On
// the stack of the call, for as long as the table does not change.
class nxNamedValues
{
public:
    explicit nxNamedValues(const nxLuaParameter& table)
        : _table(table), _hasAll(table.GetNames(_names.data(), _names.size(), _count))
    {
    }

    // As nxLuaParameter::GetNamedValue.
    template <class Value>
    bool Get(const char* name, Value& out) const
    {
        return _MayHave(name) && _table.GetNamedValue(name, out);
    }

private:
    bool _MayHave(std::string_view name) const
    {
        for (std::size_t i = 0; i < _count; ++i)
            if (_names[i] == name) return true;
        return !_hasAll;
    }

    const nxLuaParameter& _table;
    std::array<std::string_view, 8> _names;
    std::size_t _count = 0;
    const bool _hasAll;
};
