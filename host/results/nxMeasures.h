#pragma once

#include <vector>

#include "host/results/nxDayStatistics.h"
#include "host/results/nxTripStatistics.h"

// What measures are computed from. Views of the result, which outlives it.
struct nxMeasureBasis
{
    nxMeasureBasis(const nxResultData& theData, const nxResultRun& theRun)
        : data(theData),
          run(theRun),
          days(theData, theRun),
          trips(theData.trips),
          daysPerYear(theRun.GetDaysPerYear()),
          drawdowns(theData.drawdowns.GetDeepest())
    {
    }

    const nxResultData& data;
    const nxResultRun& run;
    const nxDayStatistics days;
    const nxTripStatistics trips;
    const double daysPerYear;
    const std::vector<nxDrawdown> drawdowns;  // the deepest first
};

// A figure that tells how well a run did. Shares are fractions: 0.05 is 5 %.
struct nxMeasure
{
    const char* name;
    const char* title;
    const char* unit;       // money, percent, ratio, count, seconds
    const char* direction;  // which values are better: higher, lower, none
    const char* group;      // return, risk, trips, execution, costs, activity
    const char* formula;    // for a person
    // Not a number where it is not known.
    double (*compute)(const nxMeasureBasis&);

    static const std::vector<nxMeasure>& GetAll();
    // One of the table.
    static const nxMeasure& Get(const char* name);
};
