#pragma once

#include <string>

#include "scriptFramework/lua/nxLuaWrapper.h"

// A text on its way to a function in Lua, as the property `text` of its one argument, and what the function
// makes of it. To be registered with the engine.
class nxTextExchange
{
public:
    static constexpr const char* className = "nxTextExchange";
    static const nxLuaWrapper<nxTextExchange>::FunctionType Functions[];
    static const nxLuaWrapper<nxTextExchange>::PropertyType Properties[];

    explicit nxTextExchange(std::string given) : text(std::move(given)) {}

    std::string text;

    bool Get_text(nxLuaResults& results);
    bool Set_text(const nxLuaParameter& value);
};
