#include "tests/lua/nxProbe.h"

#include <gtest/gtest.h>

#include <lua.hpp>

#include "tests/support/nxScriptJob.h"

namespace {

void ReplaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
}

}  // namespace

constexpr nxLuaWrapper<nxProbe>::FunctionType nxProbe::Functions[] = {
    {"run", &nxProbe::run},
    {"again", &nxProbe::again},
    {"getOther", &nxProbe::getOther},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(nxProbe::Functions));

constexpr nxLuaWrapper<nxProbe>::PropertyType nxProbe::Properties[] = {
    {"first", &nxProbe::Get_first, &nxProbe::Set_first},
    {"readOnly", &nxProbe::Get_readOnly, nullptr},
    {"writeOnly", nullptr, &nxProbe::Set_writeOnly},
    {"failing", &nxProbe::Get_failing, &nxProbe::Set_failing},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(nxProbe::Properties));

constexpr nxLuaWrapper<nxOther>::FunctionType nxOther::Functions[] = {
    {"twice", &nxOther::twice},
    {nullptr, nullptr},
};

constexpr nxLuaWrapper<nxOther>::PropertyType nxOther::Properties[] = {
    {"value", &nxOther::Get_value, &nxOther::Set_value},
    {nullptr, nullptr, nullptr},
};

bool nxProbe::again(nxLuaParameters&, nxLuaResults& results)
{
    results.AddObject(this);
    return true;
}

bool nxProbe::getOther(nxLuaParameters&, nxLuaResults& results)
{
    results.AddObjectOrNull(other);
    return true;
}

bool nxProbe::Get_first(nxLuaResults& results)
{
    results.Add(first);
    return true;
}

bool nxProbe::Set_first(const nxLuaParameter& value)
{
    first = value.GetNumber();
    writes += "first=" + std::to_string(static_cast<int>(first)) + ";";
    return true;
}

bool nxProbe::Get_readOnly(nxLuaResults& results)
{
    results.Add("fixed");
    return true;
}

bool nxProbe::Set_writeOnly(const nxLuaParameter& value)
{
    writes += std::string("writeOnly=") + value.GetType() + ";";
    return true;
}

bool nxProbe::Get_failing(nxLuaResults& results)
{
    return results.Fail("cannot be read: 100%s");
}

bool nxProbe::Set_failing(const nxLuaParameter&)
{
    return false;
}

bool nxOther::twice(nxLuaParameters&, nxLuaResults& results)
{
    results.Add(padding == 7 ? 2.0 * value : 0.0);  // which lies in front of what the wrapper holds
    return true;
}

bool nxOther::Get_value(nxLuaResults& results)
{
    results.Add(value);
    return true;
}

bool nxOther::Set_value(const nxLuaParameter& given)
{
    value = given.GetNumber();
    return true;
}

nxProbeEngine::nxProbeEngine()
{
    EXPECT_TRUE(LoadText(nxEvaluatorText())) << GetLastError();
    probe.other = &other;
    EXPECT_TRUE(nxLuaWrapper<nxProbe>::SetGlobal(*this, "probe", &probe));
    EXPECT_TRUE(nxLuaWrapper<nxProbe>::SetGlobal(*this, "cleared", nullptr));
    EXPECT_TRUE(nxLuaWrapper<nxOther>::SetGlobal(*this, "other", &other));
    EXPECT_TRUE(nxLuaWrapper<nxTeller>::SetGlobal(*this, "teller", &teller));
}

void nxProbeEngine::_RegisterCustomObjects()
{
    nxLuaWrapper<nxProbe>::Register(_GetState());
    nxLuaWrapper<nxOther>::Register(_GetState());
    nxLuaWrapper<nxTeller>::Register(_GetState());
}

std::string nxProbeEngine::Evaluate(const std::string& code)
{
    lua_State* L = _GetState();
    lua_getfield(L, LUA_GLOBALSINDEX, "evaluate");
    lua_pushstring(L, code.c_str());
    std::string answer;
    if (lua_pcall(L, 1, 1, 0) != 0) answer = "failed: ";
    const char* text = lua_tostring(L, -1);
    answer += text == nullptr ? luaL_typename(L, -1) : text;
    lua_pop(L, 1);
    ReplaceAll(answer, "calling 'run' on bad self", "bad argument #1 to '?'");
    ReplaceAll(answer, "'__index'", "'?'");
    ReplaceAll(answer, "'__newindex'", "'?'");
    return answer;
}
