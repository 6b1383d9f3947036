#pragma once

#include <string>

#include "base/time/nxDateTime.h"
#include "base/time/nxTimeStamp.h"
#include "scriptFramework/lua/nxAlgoObject.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// The job's clock, the global `clock`: it shows GMT, or, once a host has set a time, that time running on at
// a speed. "Real" time is that of nxTimeSource, so that a replay's clock follows the recorded time. Owned by
// the script engine; no lock of its own.
class nxAlgoClockObject : public nxAlgoObject
{
public:
    static constexpr const char* className = "nxAlgoClockObject";
    static const nxLuaWrapper<nxAlgoClockObject>::FunctionType Functions[];
    static const nxLuaWrapper<nxAlgoClockObject>::PropertyType Properties[];

    explicit nxAlgoClockObject(nxAlgoJobInterface* job);

    void SetClockTime(const nxDateTime& time);
    // No effect on a clock that was never given a time. On one that was, the new speed holds for all the time
    // since the last SetClockTime: it is not integrated.
    void SetClockSpeed(double speed) { _clockSpeed = speed; }

    // What the script reads, for the library's own use.
    nxDateTime GetClockTime() const { return _GetClockTime(); }
    double GetTotalSeconds() const { return _GetTotalSeconds(); }

    // Whether the time of day lies between two texts "HH:MM" or "HH:MM:SS", both inclusive; an end below the
    // start means past midnight.
    bool isInRange(nxLuaParameters&, nxLuaResults&);

    bool Get_year(nxLuaResults&);
    bool Get_month(nxLuaResults&);
    bool Get_day(nxLuaResults&);
    bool Get_hour(nxLuaResults&);
    bool Get_minute(nxLuaResults&);
    bool Get_second(nxLuaResults&);
    bool Get_totalSeconds(nxLuaResults&);

protected:
    virtual nxDateTime _GetClockTime() const;
    // Counts from the clock's creation and the first time given, while _GetClockTime counts from the last:
    // the two drift apart when a host sets the time more than once, and scripts rely on either as it is.
    virtual double _GetTotalSeconds() const;

private:
    // A time of day as the integer HHMMSS; false for a text of another form.
    static bool _GetTimeAsInt(const std::string& text, unsigned int& result);
    unsigned int _GetNowAsInt() const;

    double _clockSpeed = 1.0;
    nxDateTime _clockTime;
    nxTimeStamp _clockTimeSetAt;
    nxTimeStamp _createdAt;
    nxTimeStamp _firstClockTime;
    bool _clockTimeIsSet = false;
};
