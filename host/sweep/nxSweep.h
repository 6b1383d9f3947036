#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "host/report/nxProgressBar.h"
#include "host/run/nxRunVariant.h"
#include "host/sweep/nxSearch.h"
#include "host/sweep/nxSweepCrew.h"
#include "host/sweep/nxSweepJudge.h"
#include "host/sweep/nxSweepRuns.h"
#include "host/sweep/nxSweepStore.h"

// What a sweep is asked to do.
struct nxSweepOptions
{
    std::vector<nxPlanEntry> entries;  // of the plan
    std::string objective;             // what to maximise where the plan does not say
    nxSweepRuns::Make make;
    std::vector<std::string> command;  // the arguments that all runs have, to run one again
    std::string file;                  // of the results
    bool restarts = false;             // what the file holds is lost
    bool isDry = false;                // tells what it would do, after one run
    bool isCount = false;              // tells how many points there are
    bool wantsIdentity = false;        // also of one that is dry
    bool allowsUnread = false;         // parameters that no run reads
    bool triesFailedAgain = false;
    std::size_t slice = 0, slices = 1;  // does but the runs of that slice
    std::vector<std::string> taken;     // files of slices, whose runs are taken over
    nxSweepCrew::Options crew = {};
    bool showsProgress = false;
};

// Makes the runs of a plan, each once, and keeps what they come to in a file, from which it goes on when it
// is begun again. The same plan gives the same results with any number of processes.
class nxSweep
{
public:
    nxSweep(nxSweepOptions options, std::ostream& out, std::ostream& err);

    [[nodiscard]] nxRunResult Run();

    // What is known of a sweep after one of its runs.
    struct Forecast
    {
        std::size_t points = 0, parts = 1;  // runs of each point
        double secondsOfRun = 0.0;          // of processor time, over all the data
        unsigned long long memoryOfRun = 0;
        std::string identity;  // see nxSweepIdentity
    };
    // For options with isDry; in place of Run. Null, or what is wrong, also with a file of results that is
    // there already.
    [[nodiscard]] std::optional<std::string> Foresee(Forecast& forecast);

private:
    using Fault = std::optional<std::string>;

    Fault _RunAll();
    Fault _MakePlan();
    Fault _Open();
    Fault _CheckIdentity();
    Fault _WriteFacts();
    Fault _ListPoints();
    Fault _Try();
    Fault _MakeParts(nxDaySpan data);
    Fault _TakeSlices();
    Fault _RunPoints();
    Fault _Search();
    std::unique_ptr<nxSearch> _MakeSearch() const;
    Fault _RunBest();
    Fault _TellDryRun();
    Forecast _MakeForecast() const;
    bool _IsSearch() const { return _table.plan.GetMethod() >= nxPlan::Method::TreeParzen; }
    void _Tell();

    Fault _RunTasks(std::vector<nxSweepTask> tasks);
    Fault _Make(const nxSweepTask& task, nxRunOptions& options);
    void _Take(const nxSweepTask& task, nxSweepOutcome outcome);
    void _AddPoint(const nxPlanPoint& point);
    void _AddPart(nxSweepPart part);
    void _ShowProgress();
    bool _IsInterrupted() const;
    // The first point of a slice.
    std::size_t _GetSliceBegin(std::size_t slice) const
    {
        return slice * _table.points.size() / _options.slices;
    }
    bool _IsSlice() const { return _options.slices > 1; }

    const nxSweepOptions _options;
    std::ostream& _out;
    std::ostream& _err;
    nxSweepTable _table;
    nxSweepRuns _runs{_table.plan, _options.make};
    nxSweepStore _store;
    nxSweepCrew _crew;
    nxProgressBar _progress;
    std::vector<nxRunVariant> _variants;  // of the last parts
    std::optional<nxSweepOutcome> _trial;
    std::string _identity;
    Fault _lost;                                                   // why the file cannot be written
    double _bestSoFar = std::numeric_limits<double>::quiet_NaN();  // for the line of progress
    std::size_t _pointOfBest = 0;
    std::size_t _wanted = 0, _done = 0, _failed = 0;
    std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now(), _saved = _start;
};
