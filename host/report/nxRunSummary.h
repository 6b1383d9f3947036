#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/report/nxRunStatistics.h"
#include "host/results/nxResultRun.h"

// What a run leaves on the screen at its end.
class nxRunSummary
{
public:
    // Counts only, so that the same run prints the same bytes.
    static void WriteCounts(std::ostream& out, const nxRunStatistics& statistics, const std::string& end,
                            const nxResult& result);
    // What the same run came to under one fill model; failure: why it did not go its whole way.
    struct Model
    {
        std::string name;
        nxRunStatistics statistics;
        std::string failure;
    };
    static void WriteEnvelope(std::ostream& out, const std::vector<Model>& models);
    // Times, rates and memory of this machine.
    static void WriteSpeed(std::ostream& err, const nxRunStatistics& statistics);
    // One failure of a script, with its source line. No job: the only one.
    static void WriteFailure(std::ostream& err, const nxJobStatistics::Failure& failure,
                             const std::string& job);
};
