#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/results/nxResultRun.h"

// What a summary tells in figures of a run, to be held against those of another run. A value.
class nxRunFigures
{
public:
    nxRunFigures() = default;
    explicit nxRunFigures(const nxResult& result);

    // The run has traded nothing, or has not come so far.
    bool IsEmpty() const { return _figures.empty(); }
    // For another process, and back. Lines that cannot be understood are left out.
    std::string Pack() const;
    static nxRunFigures Unpack(std::string_view text);

    // A row for each figure that is another one now, or what says that none is.
    void WriteChanges(std::ostream& out, const nxRunFigures& before) const;

private:
    struct Figure
    {
        std::string account;  // whose it is; empty where there is one alone
        std::string name;     // of the measure, or one of the counts
        double value = 0.0;   // not a number: not known

        bool IsSame(const Figure& other) const { return account == other.account && name == other.name; }
    };
    struct Row
    {
        std::string title, before, now, difference;
    };

    static Row _Compare(const Figure* before, const Figure* now);
    std::vector<Row> _FindChanges(const nxRunFigures& before) const;

    std::vector<Figure> _figures;
};
