#pragma once

#include <string>
#include <vector>

#include "host/report/nxJobStatistics.h"

// What a run counted. Everything but the times is a function of scripts, data, options and seed.
struct nxRunStatistics
{
    unsigned long long quotes = 0;
    unsigned long long trades = 0;
    unsigned long long depthChanges = 0;
    unsigned long long depthRows = 0;
    unsigned long long bars = 0;
    unsigned long long impliedQuotes = 0;  // of strategies
    unsigned long long timers = 0;
    unsigned long long parameterChanges = 0;
    long long firstTime = 0;
    long long lastTime = 0;
    std::vector<nxJobStatistics> jobs;
    std::vector<std::string> remarks;           // what a person should know of the data
    std::vector<std::string> notes;             // and of the scripts and what they were given
    std::vector<std::string> unreadParameters;  // given, and no script has read them
    long long wallNanoseconds = 0;

    unsigned long long GetRowEventCount() const { return quotes + trades + depthChanges + bars; }
    unsigned long long GetEventCount() const
    {
        return GetRowEventCount() + impliedQuotes + timers + parameterChanges;
    }
};
