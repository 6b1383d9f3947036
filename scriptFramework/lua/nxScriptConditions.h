#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct lua_State;

// Conditions on named values, each an expression of Lua as in `product == "ES" and bid > 100`. They have a
// state of their own with math and string, and reach no script. A name without a value is nil; a condition
// that fails with one, since nil is not above 100, does not hold.
class nxScriptConditions
{
public:
    nxScriptConditions();

    // Gives its number; below 0: it is no expression, and error tells why.
    [[nodiscard]] int Add(const std::string& text, std::string& error);
    // No name has a value.
    void Clear();
    void Set(const char* name, std::string_view text);
    void Set(const char* name, double number);
    bool Holds(int condition);
    // What an expression comes to, or why it comes to nothing.
    std::string Compute(const std::string& text);

private:
    void _Name(const char* name);

    std::unique_ptr<lua_State, void (*)(lua_State*)> _state;
    std::vector<std::string> _names;  // that have a value
};
