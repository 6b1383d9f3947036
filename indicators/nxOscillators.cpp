// How strongly, how far and how fast a source moves, mostly between fixed bounds. Where nothing moves at all,
// they stand in the middle of their bounds.

#include <algorithm>
#include <cmath>
#include <utility>

#include "indicators/blocks/nxExponentialAverage.h"
#include "indicators/blocks/nxLag.h"
#include "indicators/blocks/nxRollingMean.h"
#include "indicators/blocks/nxRollingRange.h"
#include "indicators/nxIndicatorArguments.h"
#include "indicators/nxIndicatorFamilies.h"

namespace {

class RelativeStrength
{
public:
    explicit RelativeStrength(unsigned int period)
        : _gain(nxExponentialAverage::Wilder(period)), _loss(nxExponentialAverage::Wilder(period))
    {
    }
    double Push(double value)
    {
        const double change = value - std::exchange(_before, value);
        if (std::isnan(change)) return nxNoResult;
        const double gain = _gain.Push(std::max(change, 0.0));
        const double loss = _loss.Push(std::max(-change, 0.0));
        return gain + loss == 0 ? 50 : 100 * gain / (gain + loss);
    }

private:
    nxExponentialAverage _gain;
    nxExponentialAverage _loss;
    double _before = nxNoResult;
};

class Rsi
{
public:
    explicit Rsi(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()), _strength(arguments.GetCount("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results) { results[0] = _strength.Push(_source.Get(bar)); }

private:
    nxBarSource _source;
    RelativeStrength _strength;
};

// What both stochastics make of a place in a range: k smooths it, d smooths k.
class SmoothedPlace
{
public:
    explicit SmoothedPlace(const nxIndicatorArguments& arguments)
        : _k(arguments.GetCount("kSmoothing")), _d(arguments.GetCount("dSmoothing"))
    {
    }
    void Push(double place, double* results)
    {
        results[0] = _k.Push(place);
        results[1] = _d.Push(results[0]);
    }

private:
    nxRollingMean _k;
    nxRollingMean _d;
};

class Stochastic
{
public:
    explicit Stochastic(const nxIndicatorArguments& arguments)
        : _range(arguments.GetCount("period")), _place(arguments)
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        _place.Push(_range.Push(bar.high, bar.low).GetPlace(bar.close), results);
    }

private:
    nxRollingRange _range;
    SmoothedPlace _place;
};

class StochasticRsi
{
public:
    explicit StochasticRsi(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()),
          _strength(arguments.GetCount("rsiPeriod")),
          _range(arguments.GetCount("period")),
          _place(arguments)
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double strength = _strength.Push(_source.Get(bar));
        _place.Push(_range.Push(strength, strength).GetPlace(strength), results);
    }

private:
    nxBarSource _source;
    RelativeStrength _strength;
    nxRollingRange _range;
    SmoothedPlace _place;
};

class WilliamsR
{
public:
    explicit WilliamsR(const nxIndicatorArguments& arguments) : _range(arguments.GetCount("period")) {}
    void Step(const nxIndicatorBar& bar, double* results)
    {
        results[0] = _range.Push(bar.high, bar.low).GetPlace(bar.close) - 100;
    }

private:
    nxRollingRange _range;
};

class Macd
{
public:
    explicit Macd(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()),
          _fast(arguments.GetCount("fast")),
          _slow(arguments.GetCount("slow")),
          _signal(arguments.GetCount("signal"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double value = _source.Get(bar);
        const double fast = _fast.Push(value);
        results[0] = fast - _slow.Push(value);
        results[1] = _signal.Push(results[0]);
        results[2] = results[0] - results[1];
    }

private:
    nxBarSource _source;
    nxExponentialAverage _fast;
    nxExponentialAverage _slow;
    nxExponentialAverage _signal;
};

// The mean deviation is taken anew from the window at each bar: no sum of distances from a mean that itself
// moves can be carried on from bar to bar.
class CommodityChannel
{
public:
    explicit CommodityChannel(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()),
          _mean(arguments.GetCount("period")),
          _period(arguments.GetNumber("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double value = _source.Get(bar);
        const double mean = _mean.Push(value);
        if (std::isnan(mean)) return;
        double deviation = 0;
        double reach = 0;
        for (const double each : _mean.GetValues()) {
            deviation += std::abs(each - mean);
            reach = std::max(reach, std::abs(each - value));
        }
        // Equal values and their mean may differ by their rounding, and a ratio of roundings says nothing.
        results[0] = reach <= 1e-12 * std::abs(mean) ? 0 : (value - mean) / (0.015 * deviation / _period);
    }

private:
    nxBarSource _source;
    nxRollingMean _mean;
    double _period;
};

template <bool isRate>
class Change
{
public:
    explicit Change(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()), _before(arguments.GetCount("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double value = _source.Get(bar);
        const double before = _before.Push(value);
        results[0] = isRate ? 100 * (value - before) / before : value - before;
    }

private:
    nxBarSource _source;
    nxLag _before;
};

}  // namespace

std::vector<nxIndicatorType> nxOscillatorTypes()
{
    using Parameter = nxIndicatorParameter;
    const Parameter source = Parameter::Source();
    const Parameter kSmoothing = Parameter::Count("kSmoothing", "3");
    const Parameter dSmoothing = Parameter::Count("dSmoothing", "3");
    const Parameter period14 = Parameter::Count("period", "14");
    return {
        {"RSI", {period14, source}, {{"value"}}, true, nxFormulaOf<Rsi>::Create},
        {"MACD",
         {Parameter::Count("fast", "12", 1, "slow"), Parameter::Count("slow", "26"),
          Parameter::Count("signal", "9"), source},
         {{"macd"}, {"signal"}, {"histogram"}},
         true,
         nxFormulaOf<Macd>::Create},
        {"STOCHASTIC",
         {period14, kSmoothing, dSmoothing},
         {{"k"}, {"d"}},
         false,
         nxFormulaOf<Stochastic>::Create},
        {"STOCHRSI",
         {Parameter::Count("rsiPeriod", "14"), period14, kSmoothing, dSmoothing, source},
         {{"k"}, {"d"}},
         true,
         nxFormulaOf<StochasticRsi>::Create},
        {"CCI",
         {Parameter::Count("period", "20", 2), Parameter::Source("typical")},
         {{"value"}},
         false,
         nxFormulaOf<CommodityChannel>::Create},
        {"WILLIAMS_R", {period14}, {{"value"}}, false, nxFormulaOf<WilliamsR>::Create},
        {"ROC",
         {Parameter::Count("period", "12"), source},
         {{"value"}},
         false,
         nxFormulaOf<Change<true>>::Create},
        {"MOMENTUM",
         {Parameter::Count("period", "10"), source},
         {{"value"}},
         false,
         nxFormulaOf<Change<false>>::Create},
    };
}
