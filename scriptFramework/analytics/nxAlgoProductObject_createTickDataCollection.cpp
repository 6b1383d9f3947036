#include <algorithm>
#include <iterator>

#include "base/log/nxLogMessage.h"
#include "base/time/nxDateTime.h"
#include "scriptFramework/analytics/nxAlgoTickDataCollectionObject.h"
#include "scriptFramework/market/nxAlgoProductObject.h"

namespace {

constexpr const char* Periods[] = {"MINUTE", "5_MINUTE", "10_MINUTE", "30_MINUTE", "HOUR", "SESSION"};

// A date of the request, completed to seconds in `text`. False when it is there and no date.
bool ReadDate(const nxLuaParameter& table, const char* key, std::string& text, nxDateTime& date)
{
    if (!table.GetNamedValue(key, text)) return true;
    const std::size_t given = text.size();
    if (given == 14) text += ":00";
    if (given == 8) text += ":00:00:00";
    if (given == 14 || given == 8 || given == 17) static_cast<void>(nxDateTime::SetFromString(text, date));
    return date.IsValid();
}

}  // namespace

bool nxAlgoProductObject::createTickDataCollection(nxLuaParameters& parameters, nxLuaResults& results)
{
    if (parameters.Count() != 1)
        return results.Fail(
            "createTickDataCollection incorrect number of parameters. Requires a collection of parameters");
    const nxLuaParameter& table = parameters.Parameter(1);
    if (!table.IsTable()) return results.Fail("createTickDataCollection requires a collection of parameters");
    std::string period, startText, endText;
    double ticks = 0.0;
    bool realTime = false;
    table.GetNamedValue("period", period);
    table.GetNamedValue("ticks", ticks);
    table.GetNamedValue("realTime", realTime);
    nxDateTime start, end;
    if (!ReadDate(table, "startDate", startText, start))
        return results.Fail(
            "createTickDataCollection invalid start date format, should be YYYYMMDD:HH:MM. start date : " +
            startText);
    if (!ReadDate(table, "endDate", endText, end))
        return results.Fail(
            "createTickDataCollection invalid end date format, should be YYYYMMDD:HH:MM. end date : " +
            endText);
    const unsigned int count = nxLuaTruncate(ticks);
    if (std::ranges::find(Periods, period) == std::end(Periods) && !_KnowsPeriod(period))
        return results.Fail("createTickDataCollection invalid period [" + period +
                            "] should be MINUTE, 5_MINUTE, 10_MINUTE, 30_MINUTE, HOUR or SESSION");
    if (count == 0 && !start.IsValid())
        return results.Fail("createTickDataCollection invalid ticks size or start date");
    nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Create Tick Data Collection.  Period : ", period,
                 " , Ticks : ", count, " , Start Date : ", start.GetAsString(),
                 " , End Date : ", end.GetAsString(), " , RealTime : ", realTime ? "true" : "false");

    if (!results.Adds(nxScriptLimit::Collections) || !results.Charges(sizeof(nxAlgoTickDataCollectionObject)))
        return false;
    nxAlgoTickDataCollectionObject* const collection = _CreateTickDataCollection(period, count, start, end);
    if (collection == nullptr) {
        results.AddNull();
        return true;
    }
    collection->SetEnableRealTime(realTime);
    _tickDataCollections.push_back(collection);
    if (!collection->SetAccount(results)) return false;
    results.AddObject(collection);
    return true;
}
