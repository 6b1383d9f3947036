#include "scriptFramework/analytics/nxAlgoDateObject.h"

#include "base/time/nxDateTime.h"

using Self = nxAlgoDateObject;

constexpr nxLuaWrapper<Self>::FunctionType Self::Functions[] = {
    {"getAsSeconds", &Self::getAsSeconds},
    {"getAsDate", &Self::getAsDate},
    {nullptr, nullptr},
};
static_assert(nxIsBoundTable(Self::Functions));

constexpr nxLuaWrapper<Self>::PropertyType Self::Properties[] = {
    {nullptr, nullptr, nullptr},
};

namespace {

constexpr const char* InvalidFormat = "date:getAsSeconds invalid date format should be YYYYMMDD:HH:MM:SS";

// Beyond these a cut to a 64-bit count of seconds is no date anyway.
bool ToSeconds(double number, long long& seconds)
{
    if (!(number > -1e15 && number < 1e15)) return false;
    seconds = static_cast<long long>(number);
    return true;
}

}  // namespace

bool nxAlgoDateObject::getAsSeconds(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("date:getAsSeconds requires 1 parameter ");
    std::string text = parameters.Parameter(1).GetString();
    // A text with minutes grows too long to parse and fails; kept, as scripts give all or none of the time.
    if (text.size() == 8 || text.size() == 14) {
        text += ":00:00:00";
    } else if (text.size() != 17) {
        return results.Fail(InvalidFormat);
    }
    nxDateTime time;
    if (!nxDateTime::SetFromString(text, time).IsSuccess()) return results.Fail(InvalidFormat);
    results.Add(time.GetAsTimeValue());
    return true;
}

bool nxAlgoDateObject::getAsDate(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1) return results.Fail("date:getAsDate requires 1 parameter ");
    long long seconds = 0;
    const bool inRange = ToSeconds(parameters.Parameter(1).GetNumber(), seconds);
    const nxDateTime time(seconds);
    if (!inRange || !time.IsValid())
        return results.Fail("date:getAsDate invalid parameter should be seconds");
    results.Add(time.GetAsString("%Y%m%d:%H:%M:%S"));
    return true;
}
