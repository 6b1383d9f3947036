#include "host/sweep/nxDimension.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <unordered_set>

#include "base/values/nxStringHelper.h"
#include "base/values/nxStringParser.h"
#include "host/jobs/nxParameterSet.h"

namespace {

std::string Trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return std::string(first == text.npos ? ""
                                          : text.substr(first, text.find_last_not_of(" \t") + 1 - first));
}

std::deque<std::string> Split(std::string_view text, char separator)
{
    std::deque<std::string> parts;
    nxStringParser::ExtractAllSubstrings(std::string(text), parts, false, separator);
    for (std::string& part : parts)
        part = Trim(part);
    return parts;
}

bool Read(const std::string& text, nxDecimal& number)
{
    return number.SetFromString(text).IsSuccess();
}

// Without zeros at its end.
std::string GetShortText(nxDecimal number)
{
    number.Normalise(0);
    return number.GetAsString();
}

std::string RoundTo(double value, int places)
{
    nxDecimal rounded;
    rounded.SetFromDouble(
        value, static_cast<unsigned char>(std::clamp<int>(places, 0, nxDecimal::MaxDecimalPlaces)));
    return GetShortText(rounded);
}

// To six significant digits, above 1e5 to whole numbers.
std::string RoundToDigits(double value)
{
    return RoundTo(value, 5 - static_cast<int>(std::floor(std::log10(value))));
}

}  // namespace

std::optional<std::string> nxDimension::SetFromText(Kind kind, std::string_view name, std::string_view text)
{
    if (const auto reason = _SetName(kind, name)) return reason;
    nxDecimal number;
    const std::size_t colon = text.find(':');
    if (colon != text.npos && Read(Trim(text.substr(0, colon)), number)) return _SetRange(text);
    const std::deque<std::string> parts = Split(text, ',');
    for (const std::string& part : parts)
        if (part.empty()) return fmt::format("{} has an empty value in \"{}\"", _name, text);
    return _TakeList({parts.begin(), parts.end()});
}

std::optional<std::string> nxDimension::SetFromList(Kind kind, std::string_view name,
                                                    const std::vector<std::string>& values)
{
    if (const auto reason = _SetName(kind, name)) return reason;
    return _TakeList(values);
}

std::optional<std::string> nxDimension::_SetName(Kind kind, std::string_view name)
{
    _kind = kind;
    _name = name;
    if (name.empty()) return "there is no name in front of the =";
    const std::size_t colon = name.find(':');
    if (kind == Kind::Parameter && colon != name.npos && !nxParameterSet::IsTypeName(name.substr(colon + 1)))
        return fmt::format("unknown type \"{}\"; known are {}", name.substr(colon + 1),
                           nxParameterSet::TypeNames);
    if (name.find_first_of("` \t\n=,") == name.npos) return std::nullopt;
    return fmt::format("\"{}\" is no name: it has a blank, a comma, a = or a `", name);
}

std::optional<std::string> nxDimension::_TakeList(std::vector<std::string> values)
{
    if (values.empty()) return _name + " has no values";
    if (values.size() > MaxListed) return fmt::format("{} has more than {} values", _name, MaxListed);
    _form = Form::List;
    _count = values.size();
    _texts = std::move(values);
    _numbers.clear();
    std::unordered_set<std::string_view> seen;
    for (const std::string& text : _texts) {
        if (!seen.insert(text).second) return fmt::format("{} has the value {} twice", _name, text);
        _numbers.push_back(GetNumber(text));
    }
    _hasNumbers = std::ranges::none_of(_numbers, [](double number) { return std::isnan(number); });
    // Of what is not a number no comparison is true.
    _isOrdered = _hasNumbers && std::ranges::is_sorted(_numbers, std::ranges::less_equal());
    const auto isWord = [](const std::string& text) { return text == "true" || text == "false"; };
    if (std::ranges::any_of(_texts, isWord)) _isOrdered = false;
    return std::nullopt;
}

std::optional<std::string> nxDimension::_SetRange(std::string_view text)
{
    const std::deque<std::string> parts = Split(text, ':');
    const auto refuse = [&](const std::string& reason) {
        return fmt::format("{}: \"{}\" {}", _name, text, reason);
    };
    if (parts.size() > 3 || !Read(parts[1], _to) || !Read(parts[0], _from))
        return refuse("is no range FROM:TO:STEP, FROM:TO:logCOUNT or FROM:TO; a plan's file can list texts");
    if (_from >= _to) return refuse("does not go up");
    _texts.clear();
    _numbers.clear();
    _hasNumbers = _isOrdered = true;
    _count = 0;
    _form = Form::Linear;
    if (parts.size() == 2) return std::nullopt;
    const bool isLogarithmic = parts[2].starts_with("log");
    const auto reason =
        isLogarithmic ? _SetLogarithmic(std::string_view(parts[2]).substr(3)) : _SetSteps(parts[2]);
    return reason ? std::optional(refuse(*reason)) : std::nullopt;
}

std::optional<std::string> nxDimension::_SetSteps(std::string_view step)
{
    if (!Read(std::string(step), _step) || _step <= nxDecimalZero)
        return "has a step that is no number above 0, nor log or logCOUNT";
    for (nxDecimal* number : {&_from, &_to, &_step})
        number->Normalise(0);
    _shownPlaces = std::max(_from.GetDecimalPlaces(), _step.GetDecimalPlaces());
    const unsigned char places =
        std::max({_from.GetDecimalPlaces(), _to.GetDecimalPlaces(), _step.GetDecimalPlaces()});
    for (nxDecimal* number : {&_from, &_to, &_step}) {
        number->Normalise(places);
        if (number->GetDecimalPlaces() != places) return "has too many digits";
    }
    const nxDecimal width = _to - _from;
    if (!width.IsValid()) return "is too wide";
    _count = static_cast<unsigned long long>(width.GetMantissa() / _step.GetMantissa()) + 1;
    if (_count > MaxCount) return fmt::format("has more than {} values", MaxCount);
    _form = Form::Range;
    return std::nullopt;
}

std::optional<std::string> nxDimension::_SetLogarithmic(std::string_view count)
{
    if (_from <= nxDecimalZero) return "does not begin above 0, so it has no logarithm";
    _form = Form::Logarithmic;
    if (count.empty()) return std::nullopt;
    unsigned long long wanted = 0;
    if (!nxStringHelper::SetFromString(count, wanted).IsSuccess() || wanted < 2 || wanted > MaxListed)
        return fmt::format("has no count from 2 to {} after log", MaxListed);
    const double from = _from.GetAsDouble(), ratio = _to.GetAsDouble() / from;
    std::vector<std::string> values = {GetShortText(_from)};
    for (unsigned long long i = 1; i + 1 < wanted; ++i)
        values.push_back(
            RoundToDigits(from * std::pow(ratio, static_cast<double>(i) / static_cast<double>(wanted - 1))));
    values.push_back(GetShortText(_to));
    if (_TakeList(std::move(values)) || !_isOrdered) return "has values that are the same in six digits";
    return std::nullopt;
}

nxDecimal nxDimension::_GetDecimal(unsigned long long place) const
{
    const auto steps = static_cast<long long>(place) * _step.GetMantissa();
    return nxDecimal::FromMantissa(_from.GetMantissa() + steps, _from.GetDecimalPlaces());
}

std::string nxDimension::GetText(unsigned long long place) const
{
    if (_form != Form::Range) return _texts[place];
    // All with the same places, so that no value looks like an integer where others do not.
    nxDecimal number = _GetDecimal(place);
    number.Normalise(_shownPlaces);
    return number.GetAsString();
}

double nxDimension::GetNumber(unsigned long long place) const
{
    return _form == Form::Range ? _GetDecimal(place).GetAsDouble() : _numbers[place];
}

unsigned long long nxDimension::GetPlaceAt(double share) const
{
    const auto place = static_cast<unsigned long long>(share * static_cast<double>(_count));
    return std::min(place, _count - 1);
}

std::string nxDimension::GetTextAt(double share) const
{
    if (_count != 0) return GetText(GetPlaceAt(share));
    const double from = _from.GetAsDouble(), to = _to.GetAsDouble();
    if (_form == Form::Logarithmic) return RoundToDigits(from * std::pow(to / from, share));
    return RoundTo(from + share * (to - from), 6 - static_cast<int>(std::floor(std::log10(to - from))));
}

double nxDimension::GetNumber(const std::string& text)
{
    if (text == "true" || text == "false") return text == "true" ? 1.0 : 0.0;
    double number = 0.0;
    return nxStringHelper::SetFromString(text, number, '.').IsSuccess()
               ? number
               : std::numeric_limits<double>::quiet_NaN();
}

std::string nxDimension::GetNormalForm() const
{
    std::string text = fmt::format("{} {}", _kind == Kind::Option ? "option" : "parameter", _name);
    if (_form == Form::List) {
        for (const std::string& value : _texts)
            text += fmt::format(" {}:{}", value.size(), value);  // a value may hold anything
        return text;
    }
    text += fmt::format(" {}:{}", GetShortText(_from), GetShortText(_to));
    if (_form == Form::Range) text += ":" + GetShortText(_step);
    if (_form == Form::Logarithmic) text += ":log";
    return text;
}
