#include "host/author/nxTextExchange.h"

using Self = nxTextExchange;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {nullptr, nullptr},
};

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"text", &Self::Get_text, &Self::Set_text},
    {nullptr, nullptr, nullptr},
};

bool nxTextExchange::Get_text(nxLuaResults& results)
{
    results.Add(text);
    return true;
}

bool nxTextExchange::Set_text(const nxLuaParameter& value)
{
    text = value.GetString();
    return true;
}
