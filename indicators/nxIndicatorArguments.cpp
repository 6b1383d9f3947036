#include "indicators/nxIndicatorArguments.h"

#include <algorithm>

#include "base/values/nxStringHelper.h"
#include "indicators/nxIndicatorType.h"

namespace {

using Parameter = nxIndicatorParameter;

template <class Items, class GetName>
std::string Join(const Items& items, GetName getName)
{
    std::string text;
    for (const auto& item : items)
        text += (text.empty() ? "" : ", ") + std::string(getName(item));
    return text;
}

std::string_view GetName(const Parameter& parameter)
{
    return parameter.name;
}

// What a value may be, as an author of scripts reads it.
std::string GetAllowed(const Parameter& parameter)
{
    if (parameter.kind == Parameter::Kind::Source) {
        return "one of " + Join(nxBarSource::names, [](const char* name) { return name; });
    }
    return std::string(parameter.kind == Parameter::Kind::Count ? "a whole number" : "a number") + " from " +
           nxStringHelper::GetAsString(parameter.lowest) + " to " +
           nxStringHelper::GetAsString(parameter.highest);
}

bool Read(const Parameter& parameter, const std::string& text, double& value)
{
    if (parameter.kind == Parameter::Kind::Source) {
        const auto found = std::ranges::find(nxBarSource::names, std::string_view(text));
        value = static_cast<double>(found - nxBarSource::names.begin());
        return found != nxBarSource::names.end();
    }
    unsigned int count = 0;
    const bool isCount = parameter.kind == Parameter::Kind::Count;
    const nxErrorEnum read = isCount ? nxStringHelper::SetFromString(text, count)
                                     : nxStringHelper::SetFromString(text, value, '.');
    if (isCount) value = count;
    return read.IsSuccess() && value >= parameter.lowest && value <= parameter.highest;
}

}  // namespace

double nxIndicatorArguments::GetNumber(std::string_view name) const
{
    return _values[static_cast<std::size_t>(std::ranges::find(_type.parameters, name, GetName) -
                                            _type.parameters.begin())];
}

bool nxIndicatorArguments::Set(const std::map<std::string, std::string>& parameters, std::string& error)
{
    const std::string prefix = _type.name;
    for (const auto& [name, text] : parameters) {
        if (name == "name" || name == "type" || std::ranges::count(_type.parameters, name, GetName)) continue;
        error = prefix + " has no parameter " + name + ", ";
        error += _type.parameters.empty() ? "it takes none" : "known are " + Join(_type.parameters, GetName);
        return false;
    }
    _values.clear();
    for (const Parameter& parameter : _type.parameters) {
        const auto given = parameters.find(parameter.name);
        const std::string text = given == parameters.end() ? parameter.defaultValue : given->second;
        if (Read(parameter, text, _values.emplace_back())) continue;
        error = prefix + " " + parameter.name + " " + text + " should be " + GetAllowed(parameter);
        return false;
    }
    for (const Parameter& parameter : _type.parameters) {
        if (!parameter.limit) continue;
        const double value = GetNumber(parameter.name);
        const double limit = GetNumber(parameter.limit);
        const bool isCount = parameter.kind == Parameter::Kind::Count;
        if (value < limit || (value == limit && !isCount)) continue;
        error = prefix + " " + parameter.name + " " + nxStringHelper::GetAsString(value) + " should " +
                (isCount ? "be below " : "not be above ") + parameter.limit + " " +
                nxStringHelper::GetAsString(limit);
        return false;
    }
    return true;
}
