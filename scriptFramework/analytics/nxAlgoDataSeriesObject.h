#pragma once

#include <vector>

#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"
#include "scriptFramework/lua/nxScriptCharge.h"

// A script's list of points (x, y) with simple statistics, oldest first, from job:createDataSeries. A
// capacity above 0 drops the oldest points that go beyond it. Owned by the host, which keeps it as long as
// the script can reach it; no lock of its own.
//
// To add a point and to drop one takes constant time, amortised: dropped points stay in front of the two
// arrays until they are half of them, and then go together.
class nxAlgoDataSeriesObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoDataSeriesObject";
    static const nxLuaWrapper<nxAlgoDataSeriesObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoDataSeriesObject>::PropertyType Properties[];

    using nxAlgoObject::nxAlgoObject;

    bool add(nxLuaParameters&, nxLuaResults&);
    bool get(nxLuaParameters&, nxLuaResults&);
    bool clear(nxLuaParameters&, nxLuaResults&);
    bool average(nxLuaParameters&, nxLuaResults&);
    bool stddev(nxLuaParameters&, nxLuaResults&);
    bool covariance(nxLuaParameters&, nxLuaResults&);
    // Gives (x, x) instead of (x, y) when the first point has the highest x: kept, scripts know it.
    bool maxX(nxLuaParameters&, nxLuaResults&);
    bool maxY(nxLuaParameters&, nxLuaResults&);
    bool minX(nxLuaParameters&, nxLuaResults&);
    bool minY(nxLuaParameters&, nxLuaResults&);

    bool Get_size(nxLuaResults&);
    bool Get_slope(nxLuaResults&);
    bool Get_capacity(nxLuaResults&);
    bool Set_capacity(const nxLuaParameter&);

protected:
    // A host may know one; the points are not looked at here.
    virtual double _GetSlope() { return 0.0; }

private:
    std::size_t _GetSize() const { return _x.size() - _dropped; }
    // Makes room for one more point; false, with an error, when there may be none.
    bool _Grow(nxLuaResults& results);
    void _CapacityCheck();
    void _Compact();
    // The first point of which no other one is better; (0, 0) of an empty series. firstGivesX: instead of the
    // y of the oldest point, when that is it.
    template <class IsBetter>
    bool _AddExtreme(nxLuaResults& results, IsBetter isBetter, bool firstGivesX = false);

    nxScriptCharge _charge;  // of both arrays
    std::vector<double> _x;
    std::vector<double> _y;
    std::size_t _dropped = 0;  // points at the front of both that are no longer of the series
    unsigned int _capacity = 0;
};
