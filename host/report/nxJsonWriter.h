#pragma once

#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Writes JSON as it goes, without blanks. Numbers one way: the shortest text that reads back as the same
// double, 12 and never 12.0; one that is not finite is null. Bytes that are no UTF-8 are replaced by U+FFFD.
// Also the text of a value alone.
class nxJsonWriter
{
public:
    // The stream outlives it.
    explicit nxJsonWriter(std::ostream& out) : _out(out) {}

    nxJsonWriter& Key(std::string_view name);
    void BeginObject() { _Open('{'); }
    void EndObject() { _Close('}'); }
    void BeginArray() { _Open('['); }
    void EndArray() { _Close(']'); }
    void Text(std::string_view text);
    void Number(double number);
    void Count(unsigned long long count);
    // An object of texts by their names.
    template <class Pairs>
    void Texts(const Pairs& pairs)
    {
        BeginObject();
        for (const auto& [name, text] : pairs)
            _Write(GetText(name) + ":" + GetText(text));
        EndObject();
    }
    // An array of what get(row) gives: numbers, or whole ones as they are.
    template <class Rows, class Get>
    void Column(std::string_view name, const Rows& rows, Get get)
    {
        Key(name).BeginArray();
        for (const auto& row : rows) {
            auto value = get(row);
            if constexpr (std::is_integral_v<decltype(value)>)
                _Write(std::to_string(value));
            else
                _Write(GetNumber(value));
        }
        EndArray();
    }
    void Null() { _Write("null"); }
    void Bool(bool value) { _Write(value ? "true" : "false"); }
    // What is JSON already.
    void Raw(std::string_view json) { _Write(json); }

    static std::string GetNumber(double number);
    static std::string GetText(std::string_view text);

private:
    void _Open(char bracket);
    void _Close(char bracket);
    void _Write(std::string_view json);
    void _Separate();

    std::ostream& _out;
    bool _needsComma = false;
};
