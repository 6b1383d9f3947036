#pragma once

#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class nxRun;
struct nxRunStatistics;

// What one run of a sweep came to. A value.
struct nxSweepOutcome
{
    std::string failure;           // why it did not go its way, in one line; empty: it did
    std::string end;               // why it ended
    std::vector<double> measures;  // in the order of nxMeasure::GetAll; not a number: not known
    std::vector<long long> days;   // with data, since 1970
    std::vector<double> profits;   // at the ends of these days, since the run began
    double seconds = 0.0;          // of processor time
    unsigned long long memory =
        0;  // bytes of its process at the highest, a share of it where runs took turns
    bool hasBooks = false, hasBars = false;  // what its orders met
    std::vector<std::string> unread;         // parameters that no script read

    bool HasFailed() const { return !failure.empty(); }
    // What came from outside can be an outcome: it has all measures, and its days are such.
    bool IsSound() const;

    // Of a run that is over. `currency` tells whose money counts where there are several; empty: not given.
    static nxSweepOutcome Of(const nxRun& run, const std::string& currency, const std::string& errors);

    // For the way from the process of the run to that of the sweep: the same again from the bytes. None: they
    // are no outcome, as those of a process that a script broke out of may be.
    std::string Pack() const;
    static std::optional<nxSweepOutcome> Unpack(std::string_view bytes);
};
