#include "scriptFramework/analytics/nxAlgoTickDataObject.h"

#include "base/records/nxTickData.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"

using Self = nxAlgoTickDataObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {nullptr, nullptr},
};

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"open", &Self::Get_open, nullptr},
    {"close", &Self::Get_close, nullptr},
    {"high", &Self::Get_high, nullptr},
    {"low", &Self::Get_low, nullptr},
    {"volume", &Self::Get_volume, nullptr},
    {"time", &Self::Get_time, nullptr},
    {"timeValue", &Self::Get_timeValue, nullptr},
    {"collection", &Self::Get_collection, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

void nxAlgoTickDataObject::SetTickData(const nxTickData& tick)
{
    _open = tick.GetOpen();
    _close = tick.GetClose();
    _high = tick.GetHigh();
    _low = tick.GetLow();
    _volume = tick.GetVolume();
    _time = tick.GetTime();
}

bool nxAlgoTickDataObject::Get_open(nxLuaResults& results)
{
    results.Add(_open);
    return true;
}

bool nxAlgoTickDataObject::Get_close(nxLuaResults& results)
{
    results.Add(_close);
    return true;
}

bool nxAlgoTickDataObject::Get_high(nxLuaResults& results)
{
    results.Add(_high);
    return true;
}

bool nxAlgoTickDataObject::Get_low(nxLuaResults& results)
{
    results.Add(_low);
    return true;
}

bool nxAlgoTickDataObject::Get_volume(nxLuaResults& results)
{
    results.Add(_volume);
    return true;
}

bool nxAlgoTickDataObject::Get_time(nxLuaResults& results)
{
    if (_time.IsValid()) {
        results.Add(_time.GetAsString());
    } else {
        results.AddNull();
    }
    return true;
}

bool nxAlgoTickDataObject::Get_timeValue(nxLuaResults& results)
{
    if (_time.IsValid()) {
        results.Add(_time.GetAsTimeValue());
    } else {
        results.AddNull();
    }
    return true;
}

bool nxAlgoTickDataObject::Get_collection(nxLuaResults& results)
{
    results.AddObject(_collection);
    return true;
}
