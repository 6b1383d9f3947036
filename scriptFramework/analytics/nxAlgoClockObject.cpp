#include "scriptFramework/analytics/nxAlgoClockObject.h"

#include <cmath>
#include <deque>
#include <limits>

#include "base/time/nxDateTimeSpan.h"
#include "base/time/nxTimeSource.h"
#include "base/values/nxStringHelper.h"
#include "base/values/nxStringParser.h"

using Self = nxAlgoClockObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"isInRange", &Self::isInRange},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {"year", &Self::Get_year, nullptr},
    {"month", &Self::Get_month, nullptr},
    {"day", &Self::Get_day, nullptr},
    {"hour", &Self::Get_hour, nullptr},
    {"minute", &Self::Get_minute, nullptr},
    {"second", &Self::Get_second, nullptr},
    {"totalSeconds", &Self::Get_totalSeconds, nullptr},
    {nullptr, nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Properties));

nxAlgoClockObject::nxAlgoClockObject(nxAlgoJobInterface* job)
    : nxAlgoObject(job), _createdAt(nxTimeSource::Now())
{
}

void nxAlgoClockObject::SetClockTime(const nxDateTime& time)
{
    if (!_clockTimeIsSet) _firstClockTime = nxTimeStamp(time.GetAsTimeValue(), 0u);
    _clockTimeIsSet = true;
    _clockTime = time;
    _clockTimeSetAt = nxTimeSource::Now();
}

nxDateTime nxAlgoClockObject::_GetClockTime() const
{
    if (!_clockTimeIsSet) return nxDateTime::GetCurrentTimeAsGMT();
    const double elapsed =
        nxTimeSource::Now().GetTotalSecondsAsDouble() - _clockTimeSetAt.GetTotalSecondsAsDouble();
    constexpr double farthest = std::numeric_limits<int>::max();
    nxDateTimeSpan span;
    span.SetSeconds(static_cast<int>(std::fmax(-farthest, std::fmin(elapsed * _clockSpeed, farthest))));
    return _clockTime + span;
}

double nxAlgoClockObject::_GetTotalSeconds() const
{
    const double now = nxTimeSource::Now().GetTotalSecondsAsDouble();
    if (!_clockTimeIsSet) return now;
    return _firstClockTime.GetTotalSecondsAsDouble() +
           (now - _createdAt.GetTotalSecondsAsDouble()) * _clockSpeed;
}

bool nxAlgoClockObject::_GetTimeAsInt(const std::string& text, unsigned int& result)
{
    std::deque<std::string> parts;
    nxStringParser::ExtractAllSubstrings(text, parts, false, ':');
    if (parts.size() == 2) parts.emplace_back("0");
    if (parts.size() != 3) return false;
    unsigned int hours = 0;
    unsigned int minutes = 0;
    unsigned int seconds = 0;
    if (!nxStringHelper::SetFromString(parts[0], hours).IsSuccess() ||
        !nxStringHelper::SetFromString(parts[1], minutes).IsSuccess() ||
        !nxStringHelper::SetFromString(parts[2], seconds).IsSuccess())
        return false;
    if (hours >= 24 || minutes >= 60 || seconds >= 60) return false;
    result = (hours * 100 + minutes) * 100 + seconds;
    return true;
}

unsigned int nxAlgoClockObject::_GetNowAsInt() const
{
    const nxDateTime now = _GetClockTime();
    return static_cast<unsigned int>((now.GetHour() * 100 + now.GetMinute()) * 100 + now.GetSecond());
}

bool nxAlgoClockObject::isInRange(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 2) return results.Fail("Requires two parameters");
    const std::string startText = parameters.Parameter(1).GetString();
    const std::string endText = parameters.Parameter(2).GetString();
    unsigned int start = 0;
    unsigned int end = 0;
    if (!_GetTimeAsInt(startText, start) || !_GetTimeAsInt(endText, end))
        return results.Fail("Time incorrect format");
    const unsigned int now = _GetNowAsInt();
    if (end < start) {
        results.Add((now >= start && now < 240000) || now <= end);
    } else {
        results.Add(start <= now && now <= end);
    }
    return true;
}

bool nxAlgoClockObject::Get_year(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetClockTime().GetYear()));
    return true;
}

bool nxAlgoClockObject::Get_month(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetClockTime().GetMonth()));
    return true;
}

bool nxAlgoClockObject::Get_day(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetClockTime().GetDay()));
    return true;
}

bool nxAlgoClockObject::Get_hour(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetClockTime().GetHour()));
    return true;
}

bool nxAlgoClockObject::Get_minute(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetClockTime().GetMinute()));
    return true;
}

bool nxAlgoClockObject::Get_second(nxLuaResults& results)
{
    results.Add(static_cast<double>(_GetClockTime().GetSecond()));
    return true;
}

bool nxAlgoClockObject::Get_totalSeconds(nxLuaResults& results)
{
    results.Add(_GetTotalSeconds());
    return true;
}
