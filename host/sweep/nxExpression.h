#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// An expression over named numbers, as a person writes it: numbers, names, + - * / ^, < <= > >= == !=, and,
// or, not, parentheses, min, max, abs, sqrt and log. A name that is no word of letters, digits, _ and .
// stands in back quotes. ^ binds tightest and to the right, then a minus in front, * and /, + and -,
// comparisons, not, and, or. A value; evaluation allocates nothing and any thread may do it.
//
// What is not known, or not finite, is not a number, and so is all that is made of it, comparisons too: but
// false and unknown is false, true or unknown is true. Numbers that differ by 1e-12 of the larger one are
// equal, so that 0.1 * 3 == 0.3.
class nxExpression
{
public:
    enum class Kind : unsigned char { Number, Truth };

    // `names` are those that it may use, in the order of the values that it is evaluated with. Null, or what
    // is wrong as "column N: expected ..., not ...", the column 1-based; the expression is then left alone.
    [[nodiscard]] std::optional<std::string> SetFromText(std::string_view text,
                                                         const std::vector<std::string>& names, Kind wanted);

    // A truth is 1 or 0.
    double Evaluate(std::span<const double> values) const;
    // Known, and true.
    bool Holds(std::span<const double> values) const { return Evaluate(values) == 1.0; }

    // The indices of the names that it has, ascending.
    const std::vector<std::size_t>& GetNames() const { return _names; }
    // The same for texts that differ in blanks and parentheses only: operands before their operator.
    const std::string& GetNormalForm() const { return _normalForm; }
    // As it was written.
    const std::string& GetText() const { return _text; }

    enum class Operation : unsigned char {
        Number,
        Name,
        Negate,
        Not,
        Abs,
        Sqrt,
        Log,  // of none and one
        Add,
        Subtract,
        Multiply,
        Divide,
        Power,
        Min,
        Max,
        Less,
        LessOrEqual,
        Greater,
        GreaterOrEqual,
        Equal,
        NotEqual,
        And,
        Or
    };
    struct Step
    {
        Operation operation;
        double number = 0.0;
        std::size_t name = 0;
    };

    // More operands than that before the first operator, and deeper parentheses, are refused.
    static constexpr std::size_t MaxDepth = 64;

private:
    std::vector<Step> _steps;  // operands before their operator
    std::vector<std::size_t> _names;
    std::string _normalForm, _text;
};
