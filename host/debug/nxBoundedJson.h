#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

// Reads a JSON text of somebody who may mean harm: discarded where it is none, or so deep that the library,
// which writes lists and objects recursively, would run out of stack.
inline nlohmann::json nxReadBoundedJson(std::string_view text)
{
    constexpr int mostDepth = 64;
    int depth = 0;
    bool isInText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isInText) {
            if (c == '\\') ++i;
            isInText = c != '"';
        } else if (c == '"') {
            isInText = true;
        } else if (c == '[' || c == '{') {
            if (++depth > mostDepth) return nlohmann::json::value_t::discarded;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return nlohmann::json::parse(text, nullptr, false);
}
