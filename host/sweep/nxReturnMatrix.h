#pragma once

#include <span>
#include <vector>

// What each run of a sweep made on each day: returns, or profits where there is no capital. The same days for
// all runs. A value.
class nxReturnMatrix
{
public:
    nxReturnMatrix(std::size_t days, std::size_t runs) : _days(days), _runs(runs), _returns(days * runs) {}

    std::size_t GetDays() const { return _days; }
    std::size_t GetRuns() const { return _runs; }
    double& At(std::size_t day, std::size_t run) { return _returns[day * _runs + run]; }
    double At(std::size_t day, std::size_t run) const { return _returns[day * _runs + run]; }
    // Of all runs on one day.
    std::span<const double> GetDay(std::size_t day) const { return {&_returns[day * _runs], _runs}; }
    std::vector<double> GetRun(std::size_t run) const
    {
        std::vector<double> returns(_days);
        for (std::size_t day = 0; day < _days; ++day)
            returns[day] = At(day, run);
        return returns;
    }

private:
    std::size_t _days, _runs;
    std::vector<double> _returns;
};
