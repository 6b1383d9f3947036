#include <algorithm>
#include <lua.hpp>
#include <string_view>

#include "scriptFramework/lua/nxLuaClass.h"
#include "scriptFramework/lua/nxLuaState.h"
#include "scriptFramework/lua/nxScriptInspector.h"
#include "scriptFramework/lua/nxScriptScope.h"

// How values are told, and what is inside of them.

namespace {

constexpr std::size_t MostText = 4096;     // bytes of a value that are shown
constexpr std::size_t MostNamed = 10'000;  // variables that are not told by their places

std::string Quote(std::string_view text)
{
    std::string quoted = "\"";
    for (const char character : text.substr(0, MostText)) {
        switch (character) {
            case '"':
            case '\\':
                quoted += {'\\', character};
                break;
            case '\n':
                quoted += "\\n";
                break;
            case '\r':
                quoted += "\\r";
                break;
            case '\t':
                quoted += "\\t";
                break;
            default:
                quoted += character;
        }
    }
    return quoted + (text.size() > MostText ? "\"..." : "\"");
}

bool IsName(std::string_view text)
{
    const auto isPart = [](unsigned char c) { return std::isalnum(c) || c == '_'; };
    return !text.empty() && !std::isdigit(static_cast<unsigned char>(text[0])) &&
           std::ranges::all_of(text, isPart);
}

// Of the value at the index.
std::string GetText(lua_State* L, int index)
{
    switch (lua_type(L, index)) {
        case LUA_TNIL:
            return "nil";
        case LUA_TBOOLEAN:
            return lua_toboolean(L, index) ? "true" : "false";
        case LUA_TSTRING: {
            std::size_t size = 0;
            const char* const text = lua_tolstring(L, index, &size);
            return Quote({text, size});
        }
        case LUA_TNUMBER: {
            lua_pushvalue(L, index);  // asked for a text it becomes one
            std::string text = lua_tostring(L, -1);
            lua_pop(L, 1);
            return text;
        }
        case LUA_TFUNCTION: {
            lua_Debug function;
            lua_pushvalue(L, index);
            lua_getinfo(L, ">S", &function);
            return *function.what == 'C' ? "function"
                                         : "function of line " + std::to_string(function.linedefined);
        }
        default:
            return luaL_typename(L, index);
    }
}

// Numbers by size, then texts, then the rest.
bool IsBefore(const nxScriptInspector::Value& a, const nxScriptInspector::Value& b)
{
    return std::pair(a.name.starts_with('['), std::string_view(a.name)) <
           std::pair(b.name.starts_with('['), std::string_view(b.name));
}

template <class Values>
void Cut(Values& values, std::size_t before, std::size_t start, std::size_t count)
{
    const auto begin = values.begin() + static_cast<std::ptrdiff_t>(before);
    const std::size_t added = values.size() - before;
    if (count < added - std::min(added, start))
        values.erase(begin + static_cast<std::ptrdiff_t>(start + count), values.end());
    values.erase(begin, begin + static_cast<std::ptrdiff_t>(std::min(added, start)));
}

}  // namespace

// Takes the value at the top.
nxScriptInspector::Value nxScriptInspector::_Describe(std::string name, std::string path)
{
    lua_State* const L = _thread;
    Value value{std::move(name), GetText(L, -1), luaL_typename(L, -1), 0, 0, path};
    if (!lua_istable(L, -1)) {
        lua_pop(L, 1);
        return value;
    }
    if (const nxLuaClass* const type = nxLuaClass::Find(L, -1)) {
        value.text = value.type = type->GetName();
    } else {
        value.indexed = lua_objlen(L, -1);
        if (value.indexed != 0) value.text += " with " + std::to_string(value.indexed) + " places";
    }
    value.reference = _Add({Kind::Value, NoLevel, std::move(path)});
    _Keep(value.reference);
    return value;
}

std::vector<nxScriptInspector::Value> nxScriptInspector::GetVariables(unsigned int reference, Part part,
                                                                      std::size_t start, std::size_t count)
{
    std::vector<Value> values;
    if (reference == 0 || reference > _references.size()) return values;
    const Reference where = _references[reference - 1];  // more come while it is looked into
    const auto function = _Find(where.level);
    std::string error;
    const auto look = [&](lua_State*) {
        if (where.kind == Kind::Locals || where.kind == Kind::Upvalues) {
            _AddNames(where, function.get(), values);
            Cut(values, 0, start, count);
        } else {
            _AddInside(where, reference, part, start, count, values);
        }
    };
    if (!_Try(look, error)) values.push_back({"error", error, "error", 0, 0, ""});
    return values;
}

void nxScriptInspector::_AddNames(const Reference& reference, const lua_Debug* function,
                                  std::vector<Value>& values)
{
    lua_State* const L = _thread;
    if (function == nullptr) return;
    lua_Debug activation = *function;
    const bool areLocals = reference.kind == Kind::Locals;
    lua_getinfo(L, "f", &activation);
    for (const auto& [name, place] :
         areLocals ? nxScriptScope::GetLocals(L, activation) : nxScriptScope::GetUpvalues(L))
    {
        areLocals ? lua_getlocal(L, &activation, place) : lua_getupvalue(L, -1, place);
        values.push_back(_Describe(name, name));
    }
}

void nxScriptInspector::_AddInside(const Reference& reference, unsigned int number, Part part,
                                   std::size_t start, std::size_t count, std::vector<Value>& values)
{
    if (reference.kind == Kind::Globals) return _AddGlobals(start, count, values);
    _PushKept(number);
    const nxLuaClass* const type = nxLuaClass::Find(_thread, -1);
    if (type == nullptr) return _AddTable(reference.path, part, start, count, values);
    if (part != Part::Indexed) _AddObject(*type, reference.path, values);
    Cut(values, 0, start, count);
}

// Each property by its getter, then what the script keeps in the wrapper itself.
void nxScriptInspector::_AddObject(const nxLuaClass& type, const std::string& path,
                                   std::vector<Value>& values)
{
    lua_State* const L = _thread;
    const int object = lua_gettop(L);
    for (const char* const name : type.GetProperties()) {
        lua_pushcfunction(L, [](lua_State* state) {
            lua_gettable(state, 1);
            return 1;
        });
        lua_pushvalue(L, object);
        lua_pushstring(L, name);
        if (lua_pcall(L, 2, 1, 0) == 0) {
            values.push_back(_Describe(name, path.empty() ? "" : path + "." + name));
        } else {
            const char* const error = lua_tostring(L, -1);
            values.push_back(
                {name, std::string("error: ") + (error == nullptr ? "" : error), "error", 0, 0, ""});
            lua_pop(L, 1);
        }
    }
    for (lua_pushnil(L); lua_next(L, object) != 0;) {
        const bool isOwn = lua_type(L, -2) == LUA_TSTRING && !lua_iscfunction(L, -1);
        if (!isOwn) {
            lua_pop(L, 1);
            continue;
        }
        const std::string name = lua_tostring(L, -2);
        values.push_back(_Describe(name, path.empty() ? "" : path + "." + name));
    }
}

// Of the table at the top of the stack.
void nxScriptInspector::_AddTable(const std::string& path, Part part, std::size_t start, std::size_t count,
                                  std::vector<Value>& values)
{
    lua_State* const L = _thread;
    const std::size_t indexed = lua_objlen(L, -1);
    // Clients that ask for no part get the places first.
    if (part != Part::Named) {
        const std::size_t end = start < indexed ? start + std::min(count, indexed - start) : start;
        for (std::size_t i = start; i < end; ++i) {
            lua_rawgeti(L, -1, static_cast<int>(i + 1));
            const std::string name = "[" + std::to_string(i + 1) + "]";
            values.push_back(_Describe(name, path.empty() ? "" : path + name));
        }
    }
    if (part == Part::Indexed || values.size() == count) return;
    const std::size_t before = values.size();
    _AddEntries(values, path, indexed, false);
    Cut(values, before, part == Part::Named ? start : start - std::min(start, indexed), count - before);
}

void nxScriptInspector::_AddGlobals(std::size_t start, std::size_t count, std::vector<Value>& values)
{
    lua_pushvalue(_thread, LUA_GLOBALSINDEX);
    _AddEntries(values, "", 0, true);
    Cut(values, 0, start, count);
}

// All of the table at the top but the first places, sorted. Of globals not what Lua brings.
void nxScriptInspector::_AddEntries(std::vector<Value>& values, const std::string& path, std::size_t indexed,
                                    bool isGlobals)
{
    lua_State* const L = _thread;
    const int table = lua_gettop(L);
    lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
    const int libraries = lua_gettop(L);
    const std::size_t before = values.size();
    const auto isBrought = [&] {
        if (lua_iscfunction(L, -1)) return true;
        if (!lua_istable(L, -1) || lua_type(L, -2) != LUA_TSTRING) return false;
        lua_pushvalue(L, -2);
        lua_rawget(L, libraries);
        const bool isLibrary = lua_rawequal(L, -1, -2) != 0;
        lua_pop(L, 1);
        return isLibrary;
    };
    for (lua_pushnil(L); lua_next(L, table) != 0 && values.size() - before < MostNamed;) {
        const bool isPlace = lua_type(L, -2) == LUA_TNUMBER && lua_tonumber(L, -2) >= 1 &&
                             lua_tonumber(L, -2) <= static_cast<double>(indexed) &&
                             lua_tonumber(L, -2) == static_cast<double>(lua_tointeger(L, -2));
        if (isPlace || (isGlobals && isBrought())) {
            lua_pop(L, 1);
            continue;
        }
        const bool isText = lua_type(L, -2) == LUA_TSTRING;
        const std::string_view key = isText ? lua_tostring(L, -2) : std::string_view();
        std::string name = isText && IsName(key) ? std::string(key) : "[" + GetText(L, -2) + "]";
        std::string inside = isGlobals        ? name
                             : path.empty()   ? ""
                             : name[0] == '[' ? path + name
                                              : path + "." + name;
        values.push_back(_Describe(std::move(name), std::move(inside)));
    }
    std::sort(values.begin() + static_cast<std::ptrdiff_t>(before), values.end(), IsBefore);
}
