#pragma once

#include "scriptFramework/analytics/nxAlgoClockObject.h"

// One fixed moment with the script face of a clock; scripts see it as one. Orders and order updates show
// their times with it. Until a time is set it is not valid, and its holders give nil instead.
class nxAlgoTimeStamp : public nxAlgoClockObject
{
public:
    explicit nxAlgoTimeStamp(nxAlgoJobInterface* job) : nxAlgoClockObject(job) {}
    // Set already, of which no log line tells.
    nxAlgoTimeStamp(nxAlgoJobInterface* job, const nxTimeStamp& stamp);

    void SetDateTime(const nxDateTime& dateTime);
    void SetTimeStamp(const nxTimeStamp& stamp);
    bool IsValid() const { return _valid; }

protected:
    nxDateTime _GetClockTime() const override { return _dateTime; }
    double _GetTotalSeconds() const override;

private:
    nxDateTime _dateTime;
    nxTimeStamp _timeStamp;
    bool _hasTimeStamp = false;
    bool _valid = false;
};
