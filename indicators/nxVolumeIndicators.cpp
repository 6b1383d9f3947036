// Prices weighed by what was traded.

#include <cmath>
#include <utility>

#include "indicators/blocks/nxCompensatedSum.h"
#include "indicators/blocks/nxNoResult.h"
#include "indicators/blocks/nxRollingFold.h"
#include "indicators/nxIndicatorArguments.h"
#include "indicators/nxIndicatorFamilies.h"

namespace {

// Two sums over the same bars.
struct Sums
{
    double first = 0;
    double second = 0;

    friend Sums operator+(const Sums& a, const Sums& b) { return {a.first + b.first, a.second + b.second}; }
};

class VolumeWeightedAverage
{
public:
    explicit VolumeWeightedAverage(const nxIndicatorArguments& arguments)
        : _source(arguments.GetSource()), _fold(arguments.GetCount("period"))
    {
    }
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const Sums sums = _fold.Push({_source.Get(bar) * bar.volume, bar.volume});
        if (_fold.IsFull()) results[0] = sums.first / sums.second;
    }

private:
    nxBarSource _source;
    nxRollingFold<Sums> _fold;
};

class VolumeWeightedPrice
{
public:
    explicit VolumeWeightedPrice(const nxIndicatorArguments& arguments) : _source(arguments.GetSource()) {}
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double amount = _amount.Push(_source.Get(bar) * bar.volume);
        results[0] = amount / _volume.Push(bar.volume);
    }

private:
    nxBarSource _source;
    nxCompensatedSum _amount;
    nxCompensatedSum _volume;
};

class OnBalanceVolume
{
public:
    explicit OnBalanceVolume(const nxIndicatorArguments&) {}
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double change = bar.close - std::exchange(_close, bar.close);
        results[0] = _balance.Push(change > 0 ? bar.volume : change < 0 ? -bar.volume : 0);
    }

private:
    double _close = nxNoResult;
    nxCompensatedSum _balance;
};

class MoneyFlow
{
public:
    explicit MoneyFlow(const nxIndicatorArguments& arguments) : _flows(arguments.GetCount("period")) {}
    void Step(const nxIndicatorBar& bar, double* results)
    {
        const double price = bar.GetTypical();
        const double change = price - std::exchange(_price, price);
        if (std::isnan(change)) return;
        // Equal sums of three prices may differ by their rounding, and a bar's whole flow would go to one
        // side.
        const double rounding = 1e-12 * std::abs(price);
        const double amount = price * bar.volume;
        const Sums flows = _flows.Push({change > rounding ? amount : 0, change < -rounding ? amount : 0});
        if (!_flows.IsFull()) return;
        const double all = flows.first + flows.second;
        results[0] = all == 0 ? 50 : 100 * flows.first / all;
    }

private:
    double _price = nxNoResult;
    nxRollingFold<Sums> _flows;
};

}  // namespace

std::vector<nxIndicatorType> nxVolumeTypes()
{
    using Parameter = nxIndicatorParameter;
    return {
        {"VWMA",
         {Parameter::Count("period", "20"), Parameter::Source()},
         {{"value"}},
         false,
         nxFormulaOf<VolumeWeightedAverage>::Create},
        {"VWAP", {Parameter::Source("typical")}, {{"value"}}, true, nxFormulaOf<VolumeWeightedPrice>::Create},
        {"OBV", {}, {{"value"}}, true, nxFormulaOf<OnBalanceVolume>::Create},
        {"MFI", {Parameter::Count("period", "14")}, {{"value"}}, false, nxFormulaOf<MoneyFlow>::Create},
    };
}
