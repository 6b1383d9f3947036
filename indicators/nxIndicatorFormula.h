#pragma once

#include <memory>

#include "indicators/nxIndicatorBar.h"

class nxIndicatorArguments;

// What an indicator makes of the bars, and what it remembers of those it has taken in. Results go to an array
// with a place for each line, in which no result stands at first.
class nxIndicatorFormula
{
public:
    virtual ~nxIndicatorFormula() = default;

    // Takes in a completed bar.
    virtual void Step(const nxIndicatorBar& bar, double* results) = 0;
    // The results that Step would give, but the bar is not taken in.
    virtual void Try(const nxIndicatorBar& bar, double* results) const = 0;
};

// A formula written once, as a class with `Step(bar, results)` whose copies step without disturbing the
// original, and which is made from its arguments.
template <class Formula>
class nxFormulaOf final : public nxIndicatorFormula
{
public:
    explicit nxFormulaOf(const nxIndicatorArguments& arguments) : _formula(arguments) {}

    static std::unique_ptr<nxIndicatorFormula> Create(const nxIndicatorArguments& arguments)
    {
        return std::make_unique<nxFormulaOf>(arguments);
    }

    void Step(const nxIndicatorBar& bar, double* results) override { _formula.Step(bar, results); }
    void Try(const nxIndicatorBar& bar, double* results) const override
    {
        Formula(_formula).Step(bar, results);
    }

private:
    Formula _formula;
};
