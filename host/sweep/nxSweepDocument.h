#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "host/sweep/nxSweepJudge.h"

// A sweep as one JSON object for pages and other programs; sweep.schema.json of the docs tells its form. All
// of it but `timing` and the columns `seconds` and `memory` follows from scripts, data, options and plan.
class nxSweepDocument
{
public:
    struct Context
    {
        std::string title;
        std::map<std::string, std::string> facts;  // those of the file of results
        std::vector<std::string> rerun;  // a command that writes a point's page: {point} is its number
        std::map<std::size_t, std::string> pages;  // of points: where they lie, as seen from the sweep's page
    };

    static void Write(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge,
                      const nxLuckReport& luck, const Context& context);
    // A row for each point: its values, what it came to and the measures; nothing that depends on the
    // machine. Over several parts of the time the measures are means of the trains.
    static void WriteTable(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge);
};
