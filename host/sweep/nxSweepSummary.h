#pragma once

#include <ostream>
#include <string>

#include "host/sweep/nxSweepJudge.h"

// What a person at a terminal is told of a sweep. Static functions only.
class nxSweepSummary
{
public:
    struct Estimate
    {
        std::size_t points = 0;
        std::size_t parts = 1;  // runs of each point
        unsigned int workers = 1;
        double secondsOfRun = 0.0;           // 0: not known
        unsigned long long memoryOfRun = 0;  // bytes
    };

    // What would be run, and about how long that takes.
    static void WritePlan(std::ostream& out, const nxSweepTable& table, const Estimate& estimate);
    static void Write(std::ostream& out, const nxSweepTable& table, const nxSweepJudge& judge,
                      const nxLuckReport& luck);
    // "1.5 with fast=5 slow=20"
    static std::string DescribeBest(const nxSweepTable& table, std::size_t point, double objective);
    // "fast=5 slow=20"
    static std::string Describe(const nxSweepTable& table, std::size_t point);
    // What a reader should know beside the figures, a sentence each.
    static std::vector<std::string> GetNotes(const nxSweepTable& table, const nxSweepJudge& judge);
};
