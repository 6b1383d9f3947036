// Averages of a source over the newest bars, or over all bars with fading weights.

#include <cmath>

#include "indicators/blocks/nxExponentialAverage.h"
#include "indicators/blocks/nxLag.h"
#include "indicators/blocks/nxRollingFold.h"
#include "indicators/blocks/nxRollingMean.h"
#include "indicators/nxIndicatorArguments.h"
#include "indicators/nxIndicatorFamilies.h"

namespace {

// The average weighted 1, 2, ... period, the newest bar most.
class WeightedAverage
{
public:
    explicit WeightedAverage(unsigned int period) : _fold(period), _weights(period * (period + 1.0) / 2) {}

    double Push(double value)
    {
        if (std::isnan(value)) return nxNoResult;
        const Partial sum = _fold.Push({1, value, value});
        return _fold.IsFull() ? sum.weighted / _weights : nxNoResult;
    }

private:
    struct Partial
    {
        double count = 0;
        double sum = 0;
        double weighted = 0;

        friend Partial operator+(const Partial& older, const Partial& newer)
        {
            return {older.count + newer.count, older.sum + newer.sum,
                    older.weighted + newer.weighted + older.count * newer.sum};
        }
    };

    nxRollingFold<Partial> _fold;
    double _weights;
};

// One line, an average block of a source.
template <class Average>
class AverageOf
{
public:
    explicit AverageOf(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()), _average(arguments.GetCount("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results) { results[0] = _average.Push(_source.Get(bar)); }

private:
    nxBarSource _source;
    Average _average;
};

// Exponential averages of each other: the first takes the source, each further one the result of the one
// before it.
class DoubleExponential
{
public:
    explicit DoubleExponential(unsigned int period) : _first(period), _second(period) {}
    double Push(double value)
    {
        const double first = _first.Push(value);
        return 2 * first - _second.Push(first);
    }

private:
    nxExponentialAverage _first;
    nxExponentialAverage _second;
};

class TripleExponential
{
public:
    explicit TripleExponential(unsigned int period) : _first(period), _second(period), _third(period) {}
    double Push(double value)
    {
        const double first = _first.Push(value);
        const double second = _second.Push(first);
        return 3 * first - 3 * second + _third.Push(second);
    }

private:
    nxExponentialAverage _first;
    nxExponentialAverage _second;
    nxExponentialAverage _third;
};

class Hull
{
public:
    explicit Hull(unsigned int period)
        : _half(period / 2), _whole(period), _smooth(static_cast<unsigned int>(std::sqrt(period)))
    {
    }
    double Push(double value)
    {
        const double half = _half.Push(value);
        return _smooth.Push(2 * half - _whole.Push(value));
    }

private:
    WeightedAverage _half;
    WeightedAverage _whole;
    WeightedAverage _smooth;
};

// Kaufman's: fast where the source runs straight, slow where it goes back and forth.
class KaufmanAdaptive
{
public:
    explicit KaufmanAdaptive(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()),
          _start(arguments.GetCount("period")),
          _path(arguments.GetCount("period")),
          _period(arguments.GetNumber("period")),
          _fast(2 / (arguments.GetNumber("fast") + 1)),
          _slow(2 / (arguments.GetNumber("slow") + 1))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double value = _source.Get(bar);
        const double change = std::abs(value - _start.Push(value));
        const double path = _period * _path.Push(std::abs(value - _before));
        if (!std::isnan(path)) {
            const double efficiency = path > 0 ? change / path : 1;
            const double weight = efficiency * (_fast - _slow) + _slow;
            // The average starts from the source a bar before its first result.
            if (std::isnan(_average)) _average = _before;
            results[0] = _average += weight * weight * (value - _average);
        }
        _before = value;
    }

private:
    nxBarSource _source;
    nxLag _start;
    nxRollingMean _path;
    double _period;
    double _fast;
    double _slow;
    double _before = nxNoResult;
    double _average = nxNoResult;
};

using Parameter = nxIndicatorParameter;

template <class Average>
nxIndicatorType Type(const char* name, double lowestPeriod, bool usesAllBars)
{
    return {name,
            {Parameter::Count("period", "20", lowestPeriod), Parameter::Source()},
            {{"value"}},
            usesAllBars,
            nxFormulaOf<AverageOf<Average>>::Create};
}

}  // namespace

std::vector<nxIndicatorType> nxMovingAverageTypes()
{
    return {Type<nxRollingMean>("SMA", 1, false),
            Type<nxExponentialAverage>("EMA", 1, true),
            Type<WeightedAverage>("WMA", 1, false),
            Type<DoubleExponential>("DEMA", 1, true),
            Type<TripleExponential>("TEMA", 1, true),
            Type<Hull>("HMA", 2, false),
            {"KAMA",
             {Parameter::Count("period", "10"), Parameter::Count("fast", "2", 1, "slow"),
              Parameter::Count("slow", "30"), Parameter::Source()},
             {{"value"}},
             true,
             nxFormulaOf<KaufmanAdaptive>::Create}};
}
