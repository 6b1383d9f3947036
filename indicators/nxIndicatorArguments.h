#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "indicators/nxBarSource.h"

struct nxIndicatorType;

// The checked values of a type's parameters, the defaults filled in.
class nxIndicatorArguments
{
public:
    // The type outlives the arguments.
    explicit nxIndicatorArguments(const nxIndicatorType& type) : _type(type) {}

    // False, with a text in `error`, for a parameter that the type does not know and a value that makes no
    // sense. The keys "name" and "type" are left out.
    bool Set(const std::map<std::string, std::string>& parameters, std::string& error);

    // The value of a parameter that the type has, by its name.
    unsigned int GetCount(std::string_view name) const { return static_cast<unsigned int>(GetNumber(name)); }
    double GetNumber(std::string_view name) const;
    nxBarSource GetSource() const { return nxBarSource(GetCount("source")); }

private:
    const nxIndicatorType& _type;
    std::vector<double> _values;  // in the order of the type's parameters; of a source its index
};
