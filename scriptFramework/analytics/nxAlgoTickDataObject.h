#pragma once

#include <limits>

#include "base/time/nxDateTime.h"
#include "base/values/nxValueWrapper.h"
#include "indicators/nxIndicatorBar.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

class nxAlgoTickDataCollectionObject;
class nxTickData;

// One bar as a script sees it: a copy of a record's values, which does not refer to the record afterwards.
// Owned by its collection, and lives as long as that. All values are null until SetTickData. Takes no lock.
class nxAlgoTickDataObject final : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoTickDataObject";
    static const nxLuaWrapper<nxAlgoTickDataObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoTickDataObject>::PropertyType Properties[];

    nxAlgoTickDataObject(nxAlgoJobInterface* job, nxAlgoTickDataCollectionObject* collection)
        : nxAlgoObject(job), _collection(collection)
    {
    }

    void SetTickData(const nxTickData& tick);
    // The same of values that were read from a record before; NaN is a null.
    void SetValues(const nxIndicatorBar& bar, const nxDateTime& time);

    bool Get_open(nxLuaResults&);
    bool Get_close(nxLuaResults&);
    bool Get_high(nxLuaResults&);
    bool Get_low(nxLuaResults&);
    bool Get_volume(nxLuaResults&);
    bool Get_time(nxLuaResults&);
    bool Get_timeValue(nxLuaResults&);
    bool Get_collection(nxLuaResults&);

private:
    static constexpr double Null = std::numeric_limits<double>::quiet_NaN();

    // As a script gets them, which takes half the room of a decimal.
    double _open = Null;
    double _close = Null;
    double _high = Null;
    double _low = Null;
    nxDateTime _time;
    nxAlgoTickDataCollectionObject* _collection;
    nxVolume _volume;
};
