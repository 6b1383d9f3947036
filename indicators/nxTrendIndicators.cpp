// Which way prices go, how strongly, and since when.

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "indicators/blocks/nxExponentialAverage.h"
#include "indicators/blocks/nxLag.h"
#include "indicators/blocks/nxRollingFold.h"
#include "indicators/blocks/nxRollingRange.h"
#include "indicators/blocks/nxTrueRange.h"
#include "indicators/nxIndicatorArguments.h"
#include "indicators/nxIndicatorFamilies.h"

namespace {

// Wilder's directional movement.
class DirectionalMovement
{
public:
    explicit DirectionalMovement(const nxIndicatorArguments& arguments)
        : _averageRange(nxExponentialAverage::Wilder(arguments.GetCount("period"))),
          _plus(_averageRange),
          _minus(_averageRange),
          _index(_averageRange)
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double up = bar.high - std::exchange(_high, bar.high);
        const double down = std::exchange(_low, bar.low) - bar.low;
        const double range = _averageRange.Push(_range.Push(bar));
        if (std::isnan(up)) return;
        const double plus = _plus.Push(up > down && up > 0 ? up : 0);
        const double minus = _minus.Push(down > up && down > 0 ? down : 0);
        results[0] = _index.Push(plus + minus == 0 ? 0 : 100 * std::abs(plus - minus) / (plus + minus));
        results[1] = range == 0 ? 0 : 100 * plus / range;
        results[2] = range == 0 ? 0 : 100 * minus / range;
    }

private:
    double _high = nxNoResult;
    double _low = nxNoResult;
    nxTrueRange _range;
    nxExponentialAverage _averageRange;
    nxExponentialAverage _plus;
    nxExponentialAverage _minus;
    nxExponentialAverage _index;
};

// Wilder's stop and reverse. While short, prices are taken with the opposite sign, so that one set of rules
// serves both ways: the stop lies below and rises.
class ParabolicStop
{
public:
    explicit ParabolicStop(const nxIndicatorArguments& arguments)
        : _step(arguments.GetNumber("acceleration")), _maximum(arguments.GetNumber("maximum"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const nxIndicatorBar before = std::exchange(_before, bar);
        if (_bars < 2 && ++_bars < 2) return;
        if (_way == 0) _Start(before, bar);
        double stop = _stop;
        if (_GetNear(bar) <= stop) {
            // Stopped: the other way from here, with the stop where the move went farthest.
            _way = -_way;
            stop = std::min({-_farthest, _GetNear(before), _GetNear(bar)});
            _farthest = _GetFar(bar);
            _acceleration = _step;
        } else if (_GetFar(bar) > _farthest) {
            _farthest = _GetFar(bar);
            _acceleration = std::min(_acceleration + _step, _maximum);
        }
        results[0] = _way * stop;
        // The next stop never enters the range of the last two bars.
        _stop = std::min({stop + _acceleration * (_farthest - stop), _GetNear(before), _GetNear(bar)});
    }

private:
    void _Start(const nxIndicatorBar& before, const nxIndicatorBar& bar)
    {
        const double down = before.low - bar.low;
        _way = down > 0 && down > bar.high - before.high ? -1 : 1;
        _stop = _GetNear(before);
        _farthest = _GetFar(bar);
        _acceleration = _step;
    }
    // The price on the stop's side and the one opposite, in the sign of the present way.
    double _GetNear(const nxIndicatorBar& bar) const { return _way > 0 ? bar.low : -bar.high; }
    double _GetFar(const nxIndicatorBar& bar) const { return _way > 0 ? bar.high : -bar.low; }

    double _step;
    double _maximum;
    nxIndicatorBar _before;
    int _bars = 0;  // up to 2
    int _way = 0;   // 1 long, -1 short
    double _stop = 0;
    double _farthest = 0;
    double _acceleration = 0;
};

// How long ago the highest high and the lowest low were; of equal ones the newest counts.
class Aroon
{
public:
    explicit Aroon(const nxIndicatorArguments& arguments)
        : _fold(arguments.GetCount("period") + 1), _period(arguments.GetNumber("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        ++_bar;
        const Extremes extremes = _fold.Push({bar.high, _bar, bar.low, _bar});
        if (!_fold.IsFull()) return;
        results[0] = 100 * (1 - (_bar - extremes.highBar) / _period);
        results[1] = 100 * (1 - (_bar - extremes.lowBar) / _period);
        results[2] = results[0] - results[1];
    }

private:
    struct Extremes
    {
        double high = -std::numeric_limits<double>::infinity();
        double highBar = 0;
        double low = std::numeric_limits<double>::infinity();
        double lowBar = 0;

        friend Extremes operator+(const Extremes& older, const Extremes& newer)
        {
            const Extremes& high = newer.high >= older.high ? newer : older;
            const Extremes& low = newer.low <= older.low ? newer : older;
            return {high.high, high.highBar, low.low, low.lowBar};
        }
    };

    nxRollingFold<Extremes> _fold;
    double _period;
    double _bar = 0;
};

class Ichimoku
{
public:
    explicit Ichimoku(const nxIndicatorArguments& arguments)
        : _conversion(arguments.GetCount("conversion")),
          _base(arguments.GetCount("base")),
          _span(arguments.GetCount("span")),
          _spanA(arguments.GetCount("displacement")),
          _spanB(arguments.GetCount("displacement"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        results[0] = _conversion.Push(bar.high, bar.low).GetMiddle();
        results[1] = _base.Push(bar.high, bar.low).GetMiddle();
        results[2] = _spanA.Push((results[0] + results[1]) / 2);
        results[3] = _spanB.Push(_span.Push(bar.high, bar.low).GetMiddle());
        results[4] = bar.close;
    }

private:
    nxRollingRange _conversion;
    nxRollingRange _base;
    nxRollingRange _span;
    nxLag _spanA;
    nxLag _spanB;
};

// The least-squares line through the source against the bar's number.
class RegressionSlope
{
public:
    explicit RegressionSlope(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()), _fold(arguments.GetCount("period"))
    {
        const double period = arguments.GetNumber("period");
        _timeSquares = period * (period * period - 1) / 12;
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const Partial sum = _fold.Push({1, _source.Get(bar), 0});
        if (_fold.IsFull()) results[0] = sum.products / _timeSquares;
    }

private:
    // Products of the distances from the mean value and from the mean time; the two stretches adjoin, so the
    // distance of their mean times is half their length.
    struct Partial
    {
        double count = 0;
        double mean = 0;
        double products = 0;

        friend Partial operator+(const Partial& older, const Partial& newer)
        {
            if (older.count == 0) return newer;
            if (newer.count == 0) return older;
            const double count = older.count + newer.count;
            const double distance = newer.mean - older.mean;
            return {count, older.mean + distance * newer.count / count,
                    older.products + newer.products + older.count * newer.count / 2 * distance};
        }
    };

    nxBarSource _source;
    nxRollingFold<Partial> _fold;
    double _timeSquares;
};

}  // namespace

std::vector<nxIndicatorType> nxTrendTypes()
{
    using Parameter = nxIndicatorParameter;
    return {
        {"ADX",
         {Parameter::Count("period", "14")},
         {{"adx"}, {"plusDI"}, {"minusDI"}},
         true,
         nxFormulaOf<DirectionalMovement>::Create},
        {"PSAR",
         {Parameter::Number("acceleration", "0.02", 1, "maximum"), Parameter::Number("maximum", "0.2", 1)},
         {{"value"}},
         true,
         nxFormulaOf<ParabolicStop>::Create},
        {"AROON",
         {Parameter::Count("period", "25")},
         {{"up"}, {"down"}, {"oscillator"}},
         false,
         nxFormulaOf<Aroon>::Create},
        {"ICHIMOKU",
         {Parameter::Count("conversion", "9", 1, "base"), Parameter::Count("base", "26", 1, "span"),
          Parameter::Count("span", "52"), Parameter::Count("displacement", "26")},
         {{"conversion"}, {"base"}, {"spanA"}, {"spanB"}, {"lagging", "displacement"}},
         false,
         nxFormulaOf<Ichimoku>::Create},
        {"LINREG_SLOPE",
         {Parameter::Count("period", "14", 2), Parameter::Source()},
         {{"value"}},
         false,
         nxFormulaOf<RegressionSlope>::Create},
    };
}
