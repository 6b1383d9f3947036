#pragma once

#include "base/time/nxTimeSource.h"

// Stands still at the time that the test has set, for the thread that made it.
class nxSetTime : public nxTimeSource
{
public:
    explicit nxSetTime(const nxTimeStamp& start) : now(start) {}

    nxTimeStamp now;

    nxTimeStamp GetNow() const override { return now; }

private:
    Installation _installation{*this};
};
