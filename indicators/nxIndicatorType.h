#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "indicators/nxIndicatorFormula.h"

class nxIndicatorArguments;

// A parameter that a script may give to a type of indicator.
struct nxIndicatorParameter
{
    enum class Kind { Count, Number, Source };  // a whole number, any number, a name of nxBarSource

    static constexpr double highestCount = 100000;

    const char* name;
    Kind kind;
    const char* defaultValue;
    double lowest = 0;
    double highest = 0;
    // The parameter that it may not exceed, where there is one; a count may not equal it either.
    const char* limit = nullptr;

    static nxIndicatorParameter Count(const char* name, const char* defaultValue, double lowest = 1,
                                      const char* limit = nullptr)
    {
        return {name, Kind::Count, defaultValue, lowest, highestCount, limit};
    }
    static nxIndicatorParameter Number(const char* name, const char* defaultValue, double highest,
                                       const char* limit = nullptr)
    {
        return {name, Kind::Number, defaultValue, 0.001, highest, limit};
    }
    static nxIndicatorParameter Source(const char* defaultValue = "close")
    {
        return {"source", Kind::Source, defaultValue};
    }
};

// A line of results.
struct nxIndicatorLine
{
    const char* name;
    // The parameter that tells how many bars back of its own a result belongs; null: to its own bar.
    const char* barsBack = nullptr;
};

// A type of indicator as the catalogue lists it.
struct nxIndicatorType
{
    const char* name;
    std::vector<nxIndicatorParameter> parameters;
    std::vector<nxIndicatorLine> lines;
    // The newest result takes in every bar since the first; false: a window of the newest bars.
    bool usesAllBars;
    std::unique_ptr<nxIndicatorFormula> (*create)(const nxIndicatorArguments&);
};
