#pragma once

#include <ostream>

#include "host/results/nxResultRun.h"

// Results as CSV, for spreadsheets and notebooks.
class nxResultTables
{
public:
    // All round trips of single jobs.
    static void WriteTrips(std::ostream& out, const nxResult& result);
    // The equity at the end of each bucket, and of each day.
    static void WriteEquity(std::ostream& out, const nxResult& result);
};
