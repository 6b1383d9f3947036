#include "host/sweep/nxExpression.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>

#include "base/values/nxStringHelper.h"

namespace {

using Operation = nxExpression::Operation;
using Step = nxExpression::Step;
using Kind = nxExpression::Kind;

constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();

struct Symbol
{
    std::string_view text;
    Operation operation;
};

// Longer ones first where one begins with another.
constexpr Symbol Comparisons[] = {{"<=", Operation::LessOrEqual}, {">=", Operation::GreaterOrEqual},
                                  {"==", Operation::Equal},       {"!=", Operation::NotEqual},
                                  {"<", Operation::Less},         {">", Operation::Greater}};
constexpr Symbol Sums[] = {{"+", Operation::Add}, {"-", Operation::Subtract}};
constexpr Symbol Products[] = {{"*", Operation::Multiply}, {"/", Operation::Divide}};
constexpr Symbol Functions[] = {{"min", Operation::Min},
                                {"max", Operation::Max},
                                {"abs", Operation::Abs},
                                {"sqrt", Operation::Sqrt},
                                {"log", Operation::Log}};
constexpr const char* OperationNames[] = {
    "",  "",    "negate", "not", "abs", "sqrt", "log", "+",  "-",  "*",   "/",
    "^", "min", "max",    "<",   "<=",  ">",    ">=",  "==", "!=", "and", "or"};

bool IsWordCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.';
}

// How a wrong text is told from within the parser; never leaves this file.
struct Refusal
{
    std::string reason;
};

// What has been read: where it begins, and whether it is a number or a truth.
struct Part
{
    Kind kind;
    std::size_t at;
};

class Parser
{
public:
    Parser(std::string_view text, const std::vector<std::string>& names) : _text(text), _names(names) {}

    std::vector<Step> Parse(Kind wanted)
    {
        const Part whole = _Or();
        if (_Skip() != _text.size()) {
            if (_text[_at] == '=') _Refuse(_at, "expected == for \"equal to\"");
            _Refuse(_at, "expected an operator or the end");
        }
        _Want(whole, wanted);
        return std::move(_steps);
    }

private:
    [[noreturn]] void _Refuse(std::size_t at, const std::string& expected) const
    {
        std::size_t end = at;
        while (end < _text.size() && IsWordCharacter(_text[end]))
            ++end;
        const std::string_view found =
            _text.substr(std::min(at, _text.size()), std::max<std::size_t>(1, end - at));
        throw Refusal{fmt::format("column {}: {}, not {}", at + 1, expected,
                                  found.empty() ? "the end" : fmt::format("\"{}\"", found))};
    }

    std::size_t _Skip()
    {
        while (_at < _text.size() && (_text[_at] == ' ' || _text[_at] == '\t'))
            ++_at;
        return _at;
    }

    bool _Accept(std::string_view wanted)
    {
        if (!_text.substr(_Skip()).starts_with(wanted)) return false;
        const std::size_t end = _at + wanted.size();
        if (IsWordCharacter(wanted.back()) && end < _text.size() && IsWordCharacter(_text[end])) return false;
        _at = end;
        return true;
    }
    const Symbol* _AcceptOneOf(std::span<const Symbol> symbols)
    {
        const auto found = std::ranges::find_if(symbols, [this](const auto& s) { return _Accept(s.text); });
        return found == symbols.end() ? nullptr : &*found;
    }
    void _Expect(char wanted)
    {
        if (!_Accept(std::string_view(&wanted, 1))) _Refuse(_at, fmt::format("expected {}", wanted));
    }

    void _Want(const Part& part, Kind wanted) const
    {
        if (part.kind == wanted) return;
        _Refuse(part.at, wanted == Kind::Truth
                             ? "expected a comparison, as in a < b, of what begins here"
                             : "expected a number, which no comparison is, of what begins here");
    }

    void _Emit(Operation operation)
    {
        const bool isOperand = operation <= Operation::Name;
        if (isOperand && ++_depth > nxExpression::MaxDepth) throw Refusal{"has too many operands at once"};
        if (operation > Operation::Log) --_depth;
        _steps.push_back({operation});
    }

    Part _Or()
    {
        Part left = _And();
        while (_Accept("or"))
            _Join(left, Kind::Truth, Operation::Or, &Parser::_And);
        return left;
    }
    Part _And()
    {
        Part left = _Not();
        while (_Accept("and"))
            _Join(left, Kind::Truth, Operation::And, &Parser::_Not);
        return left;
    }
    void _Join(const Part& left, Kind kind, Operation operation, Part (Parser::*right)())
    {
        _Want(left, kind);
        _Want((this->*right)(), kind);
        _Emit(operation);
    }

    Part _Not()
    {
        const std::size_t at = _Skip();
        if (!_Accept("not")) return _Comparison();
        const Nesting nesting(*this);
        _Want(_Not(), Kind::Truth);
        _Emit(Operation::Not);
        return {Kind::Truth, at};
    }
    Part _Comparison()
    {
        const Part left = _Sum();
        const Symbol* const symbol = _AcceptOneOf(Comparisons);
        if (symbol == nullptr) return left;
        _Join(left, Kind::Number, symbol->operation, &Parser::_Sum);
        const std::size_t end = _Skip();
        if (_AcceptOneOf(Comparisons) != nullptr)
            _Refuse(end, "expected and, or, or the end after a comparison");
        return {Kind::Truth, left.at};
    }
    Part _Sum()
    {
        const Part left = _Product();
        while (const Symbol* symbol = _AcceptOneOf(Sums))
            _Join(left, Kind::Number, symbol->operation, &Parser::_Product);
        return left;
    }
    Part _Product()
    {
        const Part left = _Signed();
        while (const Symbol* symbol = _AcceptOneOf(Products))
            _Join(left, Kind::Number, symbol->operation, &Parser::_Signed);
        return left;
    }
    Part _Signed()
    {
        const std::size_t at = _Skip();
        if (!_Accept("-")) return _Power();
        const Nesting nesting(*this);
        _Want(_Signed(), Kind::Number);
        _Emit(Operation::Negate);
        return {Kind::Number, at};
    }
    Part _Power()
    {
        const Part base = _Primary();
        const Nesting nesting(*this);
        if (_Accept("^")) _Join(base, Kind::Number, Operation::Power, &Parser::_Signed);
        return base;
    }

    Part _Primary()
    {
        const std::size_t at = _Skip();
        if (_Accept("(")) {
            const Nesting nesting(*this);
            const Kind kind = _Or().kind;
            _Expect(')');
            return {kind, at};
        }
        if (const Symbol* function = _AcceptOneOf(Functions)) {
            _Call(function->operation);
        } else if (at < _text.size() && (_text[at] == '`' || IsWordCharacter(_text[at]))) {
            const bool isNumber = (_text[at] >= '0' && _text[at] <= '9') || _text[at] == '.';
            isNumber ? _Number() : _Name();
        } else {
            _Refuse(at, "expected a number, a name or (");
        }
        return {Kind::Number, at};
    }

    void _Call(Operation function)
    {
        const Nesting nesting(*this);
        _Expect('(');
        _Want(_Sum(), Kind::Number);
        if (function == Operation::Min || function == Operation::Max) {
            _Expect(',');
            do {
                _Want(_Sum(), Kind::Number);
                _Emit(function);
            } while (_Accept(","));
        } else {
            _Emit(function);
        }
        _Expect(')');
    }

    void _Number()
    {
        double number = 0.0;
        const char* const begin = _text.data() + _at;
        const auto [end, error] = std::from_chars(begin, _text.data() + _text.size(), number);
        const std::size_t next = _at + static_cast<std::size_t>(end - begin);
        if (error != std::errc() || (next < _text.size() && IsWordCharacter(_text[next])))
            _Refuse(_at, "expected a number");
        _at = next;
        _Emit(Operation::Number);
        _steps.back().number = number;
    }

    void _Name()
    {
        const std::size_t at = _at;
        std::size_t end = at + 1;
        const bool isQuoted = _text[at] == '`';
        while (end < _text.size() && (isQuoted ? _text[end] != '`' : IsWordCharacter(_text[end])))
            ++end;
        if (isQuoted && end == _text.size()) _Refuse(end, "expected a ` after the name");
        const std::string_view name =
            isQuoted ? _text.substr(at + 1, end - at - 1) : _text.substr(at, end - at);
        const auto found = std::ranges::find(_names, name);
        if (found == _names.end()) {
            const char* const form = "column {}: unknown name \"{}\"; known are {}";
            throw Refusal{fmt::format(fmt::runtime(form), at + 1, name, fmt::join(_names, ", "))};
        }
        _at = end + (isQuoted ? 1 : 0);
        _Emit(Operation::Name);
        _steps.back().name = static_cast<std::size_t>(found - _names.begin());
    }

    // Bounds the recursion, which a hostile text could drive deep.
    class Nesting
    {
    public:
        explicit Nesting(Parser& parser) : _parser(parser)
        {
            if (++parser._nested > nxExpression::MaxDepth * 4) throw Refusal{"is nested too deeply"};
        }
        ~Nesting() { --_parser._nested; }

    private:
        Parser& _parser;
    };

    std::string_view _text;
    const std::vector<std::string>& _names;
    std::size_t _at = 0, _depth = 0, _nested = 0;
    std::vector<Step> _steps;
};

double Truth(bool isTrue)
{
    return isTrue ? 1.0 : 0.0;
}

bool IsEqual(double a, double b)
{
    return std::abs(a - b) <= 1e-12 * std::max(std::abs(a), std::abs(b));
}

double ComputeOfOne(Operation operation, double a)
{
    switch (operation) {
        case Operation::Negate:
            return -a;
        case Operation::Not:
            return 1.0 - a;
        case Operation::Abs:
            return std::abs(a);
        case Operation::Sqrt:
            return std::sqrt(a);
        default:
            return std::log(a);
    }
}

double ComputeOfTwo(Operation operation, double a, double b)
{
    if (operation == Operation::And && (a == 0.0 || b == 0.0)) return 0.0;
    if (operation == Operation::Or && (a == 1.0 || b == 1.0)) return 1.0;
    if (std::isnan(a) || std::isnan(b)) return Unknown;
    switch (operation) {
        case Operation::Add:
            return a + b;
        case Operation::Subtract:
            return a - b;
        case Operation::Multiply:
            return a * b;
        case Operation::Divide:
            return a / b;
        case Operation::Power:
            return std::pow(a, b);
        case Operation::Min:
            return std::min(a, b);
        case Operation::Max:
            return std::max(a, b);
        case Operation::Less:
            return Truth(a < b && !IsEqual(a, b));
        case Operation::LessOrEqual:
            return Truth(a < b || IsEqual(a, b));
        case Operation::Greater:
            return Truth(a > b && !IsEqual(a, b));
        case Operation::GreaterOrEqual:
            return Truth(a > b || IsEqual(a, b));
        case Operation::Equal:
            return Truth(IsEqual(a, b));
        case Operation::NotEqual:
            return Truth(!IsEqual(a, b));
        case Operation::And:
            return 1.0;
        default:
            return 0.0;
    }
}

}  // namespace

std::optional<std::string> nxExpression::SetFromText(std::string_view text,
                                                     const std::vector<std::string>& names, Kind wanted)
{
    try {
        _steps = Parser(text, names).Parse(wanted);
    } catch (const Refusal& refusal) {
        return refusal.reason;
    }
    std::set<std::size_t> used;
    _normalForm.clear();
    for (const Step& step : _steps) {
        if (!_normalForm.empty()) _normalForm += ' ';
        if (step.operation == Operation::Name) {
            used.insert(step.name);
            _normalForm += '`' + names[step.name] + '`';
        } else if (step.operation == Operation::Number) {
            _normalForm += nxStringHelper::GetAsString(step.number);
        } else {
            _normalForm += OperationNames[static_cast<std::size_t>(step.operation)];
        }
    }
    _names.assign(used.begin(), used.end());
    _text = text;
    return std::nullopt;
}

double nxExpression::Evaluate(std::span<const double> values) const
{
    std::array<double, MaxDepth> stack;
    std::size_t depth = 0;
    for (const Step& step : _steps) {
        double result = 0.0;
        if (step.operation <= Operation::Name) {
            result = step.operation == Operation::Number ? step.number : values[step.name];
            ++depth;
        } else if (step.operation <= Operation::Log) {
            result = ComputeOfOne(step.operation, stack[depth - 1]);
        } else {
            --depth;
            result = ComputeOfTwo(step.operation, stack[depth - 1], stack[depth]);
        }
        stack[depth - 1] = std::isfinite(result) ? result : Unknown;
    }
    return depth == 0 ? Unknown : stack[0];
}
