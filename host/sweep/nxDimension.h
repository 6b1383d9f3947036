#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/values/nxDecimal.h"

// Something that differs from run to run: a parameter of the scripts, or an option of the run such as its
// fills. Its values are
//   ES,NQ          a list of texts
//   5:50:5         numbers from 5 to 50, 5 apart, exact, all with as many places as the begin and the step
//   need; 50 is one because the steps meet it 0.001:1:log7   7 numbers of equal ratio with both ends, rounded
//   to 6 digits 0.1:2          any number between the two, in steps of a power of ten of at most a millionth
//   of the width 0.001:1:log    the same with equal weight for equal ratios, rounded to 6 digits
// A value; any thread may read it.
class nxDimension
{
public:
    enum class Kind : unsigned char { Parameter, Option };
    static constexpr unsigned long long MaxListed = 100'000;           // in a list and a log range
    static constexpr unsigned long long MaxCount = 1'000'000'000'000;  // in a range

    // Null, or what is wrong. The name of a parameter may be JOB/NAME:TYPE.
    [[nodiscard]] std::optional<std::string> SetFromText(Kind kind, std::string_view name,
                                                         std::string_view text);
    // The same for values that are listed already, whatever they hold.
    [[nodiscard]] std::optional<std::string> SetFromList(Kind kind, std::string_view name,
                                                         const std::vector<std::string>& values);

    Kind GetKind() const { return _kind; }
    const std::string& GetName() const { return _name; }
    // How a condition calls it: without :TYPE.
    std::string GetShortName() const
    {
        return _kind == Kind::Option ? _name : _name.substr(0, _name.rfind(':'));
    }

    // 0: any value between two ends.
    unsigned long long GetCount() const { return _count; }
    // A value by its place, below the count; the number is that of true and false as 1 and 0, and not a
    // number for another text.
    std::string GetText(unsigned long long place) const;
    double GetNumber(unsigned long long place) const;
    // A value by its share of the way from the first to the last, from 0 to below 1.
    std::string GetTextAt(double share) const;
    unsigned long long GetPlaceAt(double share) const;
    static double GetNumber(const std::string& text);

    // All values are numbers or, where that is not asked for, ascending numbers: one step more or less means
    // something.
    bool HasNumbers() const { return _hasNumbers; }
    bool IsOrdered() const { return _isOrdered; }

    // The same for texts that mean the same values in the same order.
    std::string GetNormalForm() const;

private:
    enum class Form : unsigned char { List, Range, Linear, Logarithmic };

    std::optional<std::string> _SetName(Kind kind, std::string_view name);
    std::optional<std::string> _SetRange(std::string_view text);
    std::optional<std::string> _SetSteps(std::string_view step);
    std::optional<std::string> _SetLogarithmic(std::string_view count);
    std::optional<std::string> _TakeList(std::vector<std::string> values);
    nxDecimal _GetDecimal(unsigned long long place) const;

    Kind _kind = Kind::Parameter;
    std::string _name;
    Form _form = Form::List;
    unsigned long long _count = 0;
    bool _hasNumbers = true, _isOrdered = true;
    std::vector<std::string> _texts;  // of a list
    std::vector<double> _numbers;
    unsigned char _shownPlaces = 0;  // of a range
    nxDecimal _from, _to, _step;     // of the others; of equal places
};
