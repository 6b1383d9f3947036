#include "host/check/nxFindingRule.h"

#include <algorithm>
#include <stdexcept>

namespace {

constexpr nxFindingRule Rules[] = {
    {101, "syntax", "The text does not compile."},
    {102, "no-oninit", "Without a global function OnInit a script is not started."},
    {103, "dry-run",
     "A script error on the way through the main chunk and OnInit ends the job before it begins."},
    {104, "no-test", "A file of tests without a test is refused."},
    {201, "callback-name", "The engine calls global functions of known names, and nothing calls this one."},
    {202, "callback-arguments",
     "The callback is called with fewer arguments, so the last ones are always nil."},
    {203, "callback-twice", "The second function of a name replaces the first, which is never called."},
    {204, "callback-unsubscribed",
     "Events come only after a script has asked for them, so this is never called."},
    {205, "subscription-unused",
     "The script asks for events and neither hears of them nor reads what they tell."},
    {206, "collection-unsubscribed", "Until it subscribes, a collection has its history and no new bars."},
    {207, "unguarded-order", "Prices come many times a second, and so would orders."},
    {301, "unknown-property", "A property that does not exist reads as nil."},
    {302, "unknown-method", "A call of a function that does not exist fails."},
    {303, "dot-call", "Called with a point, a function does not know its object and fails."},
    {304, "property-call", "A property is a value, and to call it fails."},
    {305, "method-value", "A function that is not called is always true."},
    {306, "read-only", "The engine drops what is written to it, without a word."},
    {307, "argument-count", "The function raises an error for any other number of arguments."},
    {308, "table-key", "A key that is not known, missing, or not read changes what the call does."},
    {309, "table-value", "The value is refused, or passed over without a word."},
    {310, "argument-type", "The function raises an error for a value of another type."},
    {311, "operand-type", "Lua raises an error when it calculates with, joins or orders such values."},
    {312, "nil-value", "The market need not have it, and to calculate or compare with nil fails."},
    {313, "never-equal", "The comparison always has the same outcome."},
    {314, "computed-price", "A computed price may differ from the same price in its last bits."},
    {401, "unknown-global", "No file of the job sets it, so it is nil."},
    {402, "unknown-field", "The library has no such field, so it is nil."},
    {403, "removed-global", "The sandbox has removed it before OnInit."},
    {404, "too-early", "While the file is loaded it does not exist, or cannot be called."},
    {405, "overwritten-global",
     "The engine sets the name before OnInit, or the script loses what the engine set."},
    {406, "unread-global", "What is written and never read has no effect; mostly a name is misspelt."},
    {501, "never-set", "A variable without a value is always nil."},
    {502, "uninitialised", "It is nil there."},
    {503, "hidden-variable", "The new local is never read, and the outer variable keeps its value."},
    {504, "duplicate-key", "The first value of the key is lost."},
    {505, "unbalanced-assignment", "A variable becomes nil, or a value is lost."},
    {506, "loop-direction", "The loop runs once or not at all."},
    {507, "negation", "It compares the negation with the value."},
    {508, "unreachable", "Nothing leads to the statement."},
};

}  // namespace

std::span<const nxFindingRule> nxFindingRule::GetAll()
{
    return Rules;
}

const nxFindingRule& nxFindingRule::Find(std::string_view code)
{
    const auto rule = std::ranges::find(Rules, code, &nxFindingRule::code);
    if (rule == std::end(Rules)) throw std::logic_error("no rule " + std::string(code));
    return *rule;
}

std::string nxFindingRule::GetNumbersText()
{
    std::string text = "checker.numbers = {";
    for (const nxFindingRule& rule : Rules)
        text += "['" + std::string(rule.code) + "']=" + std::to_string(rule.number) + ",";
    return text + "}\n";
}

std::string nxFindingRule::GetSilence() const
{
    if (code == "syntax" || code == "dry-run") return "It cannot be silenced.";
    return "To silence it: -- check: ignore " + std::to_string(number) + ", on the line or the one above.";
}
