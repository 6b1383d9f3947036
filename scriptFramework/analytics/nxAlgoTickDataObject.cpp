#include "scriptFramework/analytics/nxAlgoTickDataObject.h"

#include <cmath>

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

namespace {

bool AddPrice(nxLuaResults& results, double price)
{
    if (std::isnan(price)) {
        results.AddNull();
    } else {
        results.Add(price);
    }
    return true;
}

}  // namespace

void nxAlgoTickDataObject::SetTickData(const nxTickData& tick)
{
    _open = tick.GetOpen().GetAsDouble();
    _close = tick.GetClose().GetAsDouble();
    _high = tick.GetHigh().GetAsDouble();
    _low = tick.GetLow().GetAsDouble();
    _volume = tick.GetVolume();
    _time = tick.GetTime();
}

void nxAlgoTickDataObject::SetValues(const nxIndicatorBar& bar, const nxDateTime& time)
{
    _open = bar.open;
    _close = bar.close;
    _high = bar.high;
    _low = bar.low;
    _volume = static_cast<unsigned int>(bar.volume);
    _time = time;
}

bool nxAlgoTickDataObject::Get_open(nxLuaResults& results)
{
    return AddPrice(results, _open);
}

bool nxAlgoTickDataObject::Get_close(nxLuaResults& results)
{
    return AddPrice(results, _close);
}

bool nxAlgoTickDataObject::Get_high(nxLuaResults& results)
{
    return AddPrice(results, _high);
}

bool nxAlgoTickDataObject::Get_low(nxLuaResults& results)
{
    return AddPrice(results, _low);
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
