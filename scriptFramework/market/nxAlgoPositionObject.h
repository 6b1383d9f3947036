#pragma once

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"
#include "scriptFramework/market/nxAlgoPosition.h"

// A script's read-only view of a position: the argument of OnPosition, and the object behind a product's
// `position`. It owns a copy and does not follow the host's record between calls of SetPosition.
class nxAlgoPositionObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoPositionObject";
    static constexpr bool endsWithEvent = true;
    static const nxLuaWrapper<nxAlgoPositionObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoPositionObject>::PropertyType Properties[];

    nxAlgoPositionObject(nxAlgoJobInterface* job, unsigned int id);
    nxAlgoPositionObject(nxAlgoJobInterface* job, unsigned int id, const nxAlgoPosition& position);

    void SetPosition(const nxAlgoPosition& position) { _position = position; }

    bool Get_id(nxLuaResults&);
    bool Get_totalNet(nxLuaResults&);
    bool Get_totalShort(nxLuaResults&);
    bool Get_totalLong(nxLuaResults&);
    bool Get_totalAverageBuyPrice(nxLuaResults&);
    bool Get_totalAverageSellPrice(nxLuaResults&);
    bool Get_totalCost(nxLuaResults&);
    bool Get_totalRevenue(nxLuaResults&);
    bool Get_localNet(nxLuaResults&);
    bool Get_localShort(nxLuaResults&);
    bool Get_localLong(nxLuaResults&);
    bool Get_localAverageBuyPrice(nxLuaResults&);
    bool Get_localAverageSellPrice(nxLuaResults&);
    bool Get_localCost(nxLuaResults&);
    bool Get_localRevenue(nxLuaResults&);
    bool Get_dayNet(nxLuaResults&);
    bool Get_dayShort(nxLuaResults&);
    bool Get_dayLong(nxLuaResults&);
    bool Get_dayAverageBuyPrice(nxLuaResults&);
    bool Get_dayAverageSellPrice(nxLuaResults&);
    bool Get_dayCost(nxLuaResults&);
    bool Get_dayRevenue(nxLuaResults&);
    bool Get_openAveragePrice(nxLuaResults&);
    bool Get_openPos(nxLuaResults&);
    bool Get_currency(nxLuaResults&);

private:
    nxAlgoPosition _position;
    unsigned int _id;
};
