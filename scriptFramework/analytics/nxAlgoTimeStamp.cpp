#include "scriptFramework/analytics/nxAlgoTimeStamp.h"

#include "base/log/nxLogMessage.h"

nxAlgoTimeStamp::nxAlgoTimeStamp(nxAlgoJobInterface* job, const nxTimeStamp& stamp)
    : nxAlgoClockObject(job),
      _dateTime(stamp.GetAsDateTime()),
      _timeStamp(stamp),
      _hasTimeStamp(true),
      _valid(true)
{
}

void nxAlgoTimeStamp::SetDateTime(const nxDateTime& dateTime)
{
    _valid = dateTime.IsValid();
    _dateTime = dateTime;
}

void nxAlgoTimeStamp::SetTimeStamp(const nxTimeStamp& stamp)
{
    if (nxLogManager::ShouldLog(nxLogLevel::Info))
        nxLogMessage(nxLogLevel::Info, GetLogPrefix(), "Set Time Stamp ", stamp.GetAsString());
    _hasTimeStamp = true;
    _valid = true;
    _timeStamp = stamp;
    _dateTime = stamp.GetAsDateTime();
}

double nxAlgoTimeStamp::_GetTotalSeconds() const
{
    return _hasTimeStamp ? _timeStamp.GetTotalSecondsAsDouble()
                         : static_cast<double>(_dateTime.GetAsTimeValue());
}
