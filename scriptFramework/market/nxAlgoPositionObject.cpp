#include "scriptFramework/market/nxAlgoPositionObject.h"

using Self = nxAlgoPositionObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {nullptr, nullptr},
};

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"id", &Self::Get_id, nullptr},
    {"totalNet", &Self::Get_totalNet, nullptr},
    {"totalShort", &Self::Get_totalShort, nullptr},
    {"totalLong", &Self::Get_totalLong, nullptr},
    {"totalAverageBuyPrice", &Self::Get_totalAverageBuyPrice, nullptr},
    {"totalAverageSellPrice", &Self::Get_totalAverageSellPrice, nullptr},
    {"totalCost", &Self::Get_totalCost, nullptr},
    {"totalRevenue", &Self::Get_totalRevenue, nullptr},
    {"localNet", &Self::Get_localNet, nullptr},
    {"localShort", &Self::Get_localShort, nullptr},
    {"localLong", &Self::Get_localLong, nullptr},
    {"localAverageBuyPrice", &Self::Get_localAverageBuyPrice, nullptr},
    {"localAverageSellPrice", &Self::Get_localAverageSellPrice, nullptr},
    {"localCost", &Self::Get_localCost, nullptr},
    {"localRevenue", &Self::Get_localRevenue, nullptr},
    {"dayNet", &Self::Get_dayNet, nullptr},
    {"dayShort", &Self::Get_dayShort, nullptr},
    {"dayLong", &Self::Get_dayLong, nullptr},
    {"dayAverageBuyPrice", &Self::Get_dayAverageBuyPrice, nullptr},
    {"dayAverageSellPrice", &Self::Get_dayAverageSellPrice, nullptr},
    {"dayCost", &Self::Get_dayCost, nullptr},
    {"dayRevenue", &Self::Get_dayRevenue, nullptr},
    {"openAveragePrice", &Self::Get_openAveragePrice, nullptr},
    {"openPos", &Self::Get_openPos, nullptr},
    {"currency", &Self::Get_currency, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoPositionObject::nxAlgoPositionObject(nxAlgoJobInterface* job, unsigned int id)
    : nxAlgoObject(job), _id(id)
{
}

nxAlgoPositionObject::nxAlgoPositionObject(nxAlgoJobInterface* job, unsigned int id,
                                           const nxAlgoPosition& position)
    : nxAlgoObject(job), _position(position), _id(id)
{
}

bool nxAlgoPositionObject::Get_id(nxLuaResults& results)
{
    results.Add(_id);
    return true;
}

bool nxAlgoPositionObject::Get_totalNet(nxLuaResults& results)
{
    results.Add(_position.GetTotalNet());
    return true;
}

bool nxAlgoPositionObject::Get_totalShort(nxLuaResults& results)
{
    results.Add(_position.GetTotalShort());
    return true;
}

bool nxAlgoPositionObject::Get_totalLong(nxLuaResults& results)
{
    results.Add(_position.GetTotalLong());
    return true;
}

bool nxAlgoPositionObject::Get_totalAverageBuyPrice(nxLuaResults& results)
{
    results.Add(_position.GetTotalAverageBuyPrice());
    return true;
}

bool nxAlgoPositionObject::Get_totalAverageSellPrice(nxLuaResults& results)
{
    results.Add(_position.GetTotalAverageSellPrice());
    return true;
}

bool nxAlgoPositionObject::Get_totalCost(nxLuaResults& results)
{
    results.Add(_position.GetTotalCost());
    return true;
}

bool nxAlgoPositionObject::Get_totalRevenue(nxLuaResults& results)
{
    results.Add(_position.GetTotalRevenue());
    return true;
}

bool nxAlgoPositionObject::Get_localNet(nxLuaResults& results)
{
    results.Add(_position.GetLocalNet());
    return true;
}

bool nxAlgoPositionObject::Get_localShort(nxLuaResults& results)
{
    results.Add(_position.GetLocalShort());
    return true;
}

bool nxAlgoPositionObject::Get_localLong(nxLuaResults& results)
{
    results.Add(_position.GetLocalLong());
    return true;
}

bool nxAlgoPositionObject::Get_localAverageBuyPrice(nxLuaResults& results)
{
    results.Add(_position.GetLocalAverageBuyPrice());
    return true;
}

bool nxAlgoPositionObject::Get_localAverageSellPrice(nxLuaResults& results)
{
    results.Add(_position.GetLocalAverageSellPrice());
    return true;
}

bool nxAlgoPositionObject::Get_localCost(nxLuaResults& results)
{
    results.Add(_position.GetLocalCost());
    return true;
}

bool nxAlgoPositionObject::Get_localRevenue(nxLuaResults& results)
{
    results.Add(_position.GetLocalRevenue());
    return true;
}

bool nxAlgoPositionObject::Get_dayNet(nxLuaResults& results)
{
    results.Add(static_cast<double>(_position.GetDayNet()));
    return true;
}

bool nxAlgoPositionObject::Get_dayShort(nxLuaResults& results)
{
    results.Add(_position.GetDayShort());
    return true;
}

bool nxAlgoPositionObject::Get_dayLong(nxLuaResults& results)
{
    results.Add(_position.GetDayLong());
    return true;
}

bool nxAlgoPositionObject::Get_dayAverageBuyPrice(nxLuaResults& results)
{
    results.Add(_position.GetDayAverageBuyPrice());
    return true;
}

bool nxAlgoPositionObject::Get_dayAverageSellPrice(nxLuaResults& results)
{
    results.Add(_position.GetDayAverageSellPrice());
    return true;
}

bool nxAlgoPositionObject::Get_dayCost(nxLuaResults& results)
{
    results.Add(_position.GetDayCost());
    return true;
}

bool nxAlgoPositionObject::Get_dayRevenue(nxLuaResults& results)
{
    results.Add(_position.GetDayRevenue());
    return true;
}

bool nxAlgoPositionObject::Get_openAveragePrice(nxLuaResults& results)
{
    results.Add(_position.GetRunningOpenDayAveragePrice());
    return true;
}

bool nxAlgoPositionObject::Get_openPos(nxLuaResults& results)
{
    results.Add(static_cast<double>(_position.GetOpenPos()));
    return true;
}

bool nxAlgoPositionObject::Get_currency(nxLuaResults& results)
{
    results.Add(_position.GetCurrency().GetAsString());
    return true;
}
