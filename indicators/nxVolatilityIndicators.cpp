// How far prices spread, and the bands drawn from it.

#include <cmath>

#include "indicators/blocks/nxExponentialAverage.h"
#include "indicators/blocks/nxRollingFold.h"
#include "indicators/blocks/nxRollingRange.h"
#include "indicators/blocks/nxTrueRange.h"
#include "indicators/nxIndicatorArguments.h"
#include "indicators/nxIndicatorFamilies.h"

namespace {

// Mean and squared distances from it. Two stretches are joined by the distance of their means (Chan, Golub
// and LeVeque), so that small changes at a high level keep their digits.
struct Spread
{
    double count = 0;
    double mean = 0;
    double squares = 0;

    friend Spread operator+(const Spread& a, const Spread& b)
    {
        if (a.count == 0) return b;
        if (b.count == 0) return a;
        const double count = a.count + b.count;
        const double shift = (b.mean - a.mean) * b.count / count;
        return {count, a.mean + shift, a.squares + b.squares + shift * (b.mean - a.mean) * a.count};
    }
    double GetDeviation() const { return std::sqrt(squares / count); }
};

class StandardDeviation
{
public:
    explicit StandardDeviation(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()), _fold(arguments.GetCount("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const Spread spread = _fold.Push({1, _source.Get(bar), 0});
        if (_fold.IsFull()) results[0] = spread.GetDeviation();
    }

private:
    nxBarSource _source;
    nxRollingFold<Spread> _fold;
};

// Three lines at one distance from each other.
void SetBands(double middle, double distance, double* results)
{
    results[0] = middle + distance;
    results[1] = middle;
    results[2] = middle - distance;
}

class Bollinger
{
public:
    explicit Bollinger(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()),
          _fold(arguments.GetCount("period")),
          _deviations(arguments.GetNumber("deviations"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const Spread spread = _fold.Push({1, _source.Get(bar), 0});
        if (_fold.IsFull()) SetBands(spread.mean, _deviations * spread.GetDeviation(), results);
    }

private:
    nxBarSource _source;
    nxRollingFold<Spread> _fold;
    double _deviations;
};

class AverageTrueRange
{
public:
    explicit AverageTrueRange(const nxIndicatorArguments& arguments)
        : _average(nxExponentialAverage::Wilder(arguments.GetCount("period")))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results) { results[0] = _average.Push(_range.Push(bar)); }

private:
    nxTrueRange _range;
    nxExponentialAverage _average;
};

class Keltner
{
public:
    explicit Keltner(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()),
          _middle(arguments.GetCount("period")),
          _width(nxExponentialAverage::Wilder(arguments.GetCount("atrPeriod"))),
          _multiplier(arguments.GetNumber("multiplier"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double middle = _middle.Push(_source.Get(bar));
        SetBands(middle, _multiplier * _width.Push(_range.Push(bar)), results);
    }

private:
    nxBarSource _source;
    nxExponentialAverage _middle;
    nxTrueRange _range;
    nxExponentialAverage _width;
    double _multiplier;
};

class Donchian
{
public:
    explicit Donchian(const nxIndicatorArguments& arguments) : _range(arguments.GetCount("period")) {}
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const auto range = _range.Push(bar.high, bar.low);
        results[0] = range.highest;
        results[1] = range.GetMiddle();
        results[2] = range.lowest;
    }

private:
    nxRollingRange _range;
};

}  // namespace

std::vector<nxIndicatorType> nxVolatilityTypes()
{
    using Parameter = nxIndicatorParameter;
    const Parameter source = Parameter::Source();
    const std::vector<nxIndicatorLine> bands = {{"upper"}, {"middle"}, {"lower"}};
    return {
        {"STDDEV",
         {Parameter::Count("period", "20", 2), source},
         {{"value"}},
         false,
         nxFormulaOf<StandardDeviation>::Create},
        {"BOLLINGER",
         {Parameter::Count("period", "20", 2), Parameter::Number("deviations", "2", 1000), source},
         bands,
         false,
         nxFormulaOf<Bollinger>::Create},
        {"ATR", {Parameter::Count("period", "14")}, {{"value"}}, true, nxFormulaOf<AverageTrueRange>::Create},
        {"KELTNER",
         {Parameter::Count("period", "20"), Parameter::Count("atrPeriod", "10"),
          Parameter::Number("multiplier", "2", 1000), source},
         bands,
         true,
         nxFormulaOf<Keltner>::Create},
        {"DONCHIAN", {Parameter::Count("period", "20")}, bands, false, nxFormulaOf<Donchian>::Create},
    };
}
