#include "scriptFramework/lua/nxScriptLines.h"

#include <algorithm>
#include <cstring>
#include <lua.hpp>
#include <memory>

namespace {

// The interface of Lua 5.1 tells the lines of a function, but not the functions inside of it; its precompiled
// form has both. It comes from this process's own compiler, in the sizes of this machine.
class Functions
{
public:
    explicit Functions(const std::string& dump) : _next(dump.data()), _left(dump.size()) {}

    bool Read(std::vector<unsigned int>& lines)
    {
        constexpr std::size_t header = 12;
        return _Skip(header) && _Function(lines);
    }

private:
    bool _Function(std::vector<unsigned int>& lines)
    {
        constexpr std::size_t flags = 4;  // upvalues, parameters, varargs, stack
        return _Text() && _Skip(2 * sizeof(int) + flags) &&
               _List([&] { return _Skip(sizeof(unsigned int)); }) && _List([&] { return _Constant(); }) &&
               _List([&] { return _Function(lines); }) && _List([&] { return _Line(lines); }) &&
               _List([&] { return _Text() && _Skip(2 * sizeof(int)); }) && _List([&] { return _Text(); });
    }
    bool _Constant()
    {
        char type = 0;
        if (!_Take(type)) return false;
        switch (type) {
            case LUA_TNIL:
                return true;
            case LUA_TBOOLEAN:
                return _Skip(1);
            case LUA_TNUMBER:
                return _Skip(sizeof(lua_Number));
            default:
                return _Text();
        }
    }
    bool _Line(std::vector<unsigned int>& lines)
    {
        int line = 0;
        if (!_Take(line)) return false;
        lines.push_back(static_cast<unsigned int>(line));
        return true;
    }
    bool _Text()
    {
        std::size_t size = 0;
        return _Take(size) && _Skip(size);
    }
    template <class Item>
    bool _List(Item item)
    {
        int count = 0;
        if (!_Take(count)) return false;
        for (; count > 0; --count)
            if (!item()) return false;
        return true;
    }
    template <class Value>
    bool _Take(Value& value)
    {
        if (_left < sizeof value) return false;
        std::memcpy(&value, _next, sizeof value);
        return _Skip(sizeof value);
    }
    bool _Skip(std::size_t bytes)
    {
        if (bytes > _left) return false;
        _next += bytes;
        _left -= bytes;
        return true;
    }

    const char* _next;
    std::size_t _left;
};

int Append(lua_State*, const void* block, std::size_t size, void* text)
{
    static_cast<std::string*>(text)->append(static_cast<const char*>(block), size);
    return 0;
}

}  // namespace

std::vector<unsigned int> nxGetLinesWithCode(const std::string& text, std::string& error)
{
    std::vector<unsigned int> lines;
    const std::unique_ptr<lua_State, void (*)(lua_State*)> state(luaL_newstate(), lua_close);
    if (state == nullptr) return lines;
    lua_State* const L = state.get();
    if (luaL_loadbuffer(L, text.data(), text.size(), "=script") != 0) {
        error = lua_tostring(L, -1);
        return lines;
    }
    std::string dump;
    lua_dump(L, Append, &dump);
    if (!Functions(dump).Read(lines)) lines.clear();
    std::ranges::sort(lines);
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    return lines;
}
