#include "scriptFramework/lua/nxLuaParameterUse.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <lua.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t MostBytes = 256 * 1024;  // of a function that is looked through

int Write(lua_State*, const void* block, std::size_t size, void* code)
{
    std::string& text = *static_cast<std::string*>(code);
    text.append(static_cast<const char*>(block), size);
    return text.size() > MostBytes ? 1 : 0;
}

// Takes values off the front of a precompiled function. Beyond the end it gives zeros, and IsGood() is false.
class Reader
{
public:
    explicit Reader(std::string_view bytes) : _bytes(bytes) {}

    bool IsGood() const { return _isGood; }
    bool Begins(std::string_view with) { return _Take(with.size()) == with; }
    template <class T>
    T Get()
    {
        T value{};
        const std::string_view bytes = _Take(sizeof value);
        if (_isGood) std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    std::string_view GetText()
    {
        const std::string_view text = _Take(Get<std::size_t>());
        return text.substr(0, text.empty() ? 0 : text.size() - 1);
    }
    void Skip(std::size_t count) { _Take(count); }

private:
    std::string_view _Take(std::size_t count)
    {
        _isGood = _isGood && count <= _bytes.size();
        if (!_isGood) return {};
        const std::string_view taken = _bytes.substr(0, count);
        _bytes.remove_prefix(count);
        return taken;
    }

    std::string_view _bytes;
    bool _isGood = true;
};

#ifdef LUAJIT_VERSION

// Of this engine's code only the count of parameters is understood. What a function defines comes before it.

// A number of 7 bits a byte, the lowest first.
std::uint32_t GetPacked(Reader& reader)
{
    std::uint32_t value = 0;
    for (unsigned int shift = 0; shift < 32; shift += 7) {
        const unsigned int byte = reader.Get<unsigned char>();
        value |= (byte & 0x7F) << shift;
        if (byte < 0x80) break;
    }
    return value;
}

nxLuaParameterUse ReadUse(std::string_view bytes, const std::vector<const char*>&)
{
    constexpr std::uint32_t isStripped = 2;
    constexpr unsigned int hasVarargs = 2;
    Reader reader(bytes);
    if (!reader.Begins("\033LJ\002")) return nxLuaParameterUse::Any;
    if ((GetPacked(reader) & isStripped) == 0) reader.Skip(GetPacked(reader));
    bool takes = true;
    while (const std::uint32_t size = GetPacked(reader)) {
        const unsigned int flags = reader.Get<unsigned char>();
        const unsigned int parameters = reader.Get<unsigned char>();
        takes = parameters != 0 || (flags & hasVarargs) != 0;
        reader.Skip(size - 2);
    }
    return takes || !reader.IsGood() ? nxLuaParameterUse::Any : nxLuaParameterUse::None;
}

#else

// What the instructions of Lua 5.1 read of registers, by their numbers: A, B and C are their operands. The
// first parameter lies in register 0, where no call has its function and no concatenation its end.
enum Operand : unsigned char { None = 0, A = 1, B = 2, C = 4 };
constexpr unsigned char Reads[] = {
    B,                                             // MOVE, which also tells what a new closure captures
    None,  None,  None,      None,  None,          // LOADK, LOADBOOL, LOADNIL, GETUPVAL, GETGLOBAL
    B | C,                                         // GETTABLE: A := B[C]
    A,     A,     A | B | C,                       // SETGLOBAL, SETUPVAL, SETTABLE
    None,                                          // NEWTABLE
    B | C,                                         // SELF: A + 1 := B, A := B[C]
    B | C, B | C, B | C,     B | C, B | C, B | C,  // arithmetic
    B,     None,  B,         B,                    // UNM, NOT, LEN, CONCAT
    None,                                          // JMP
    B | C, B | C, B | C,                           // EQ, LT, LE
    None,  B,                                      // TEST, TESTSET
    A,     A,                                      // CALL, TAILCALL
    A,                                             // RETURN: B - 1 values from A on
    A,     A,     A,         A,                    // FORLOOP, FORPREP, TFORLOOP, SETLIST
    None,  None,  None                             // CLOSE, CLOSURE, VARARG
};
constexpr unsigned int GetTable = 6;
constexpr unsigned int Self = 11;
constexpr unsigned int Equal = 23;
constexpr unsigned int Return = 30;
constexpr unsigned int FirstConstant = 256;  // operands from here on are constants

struct Instruction
{
    explicit Instruction(std::uint32_t bits)
        : operation(bits & 0x3F), a(bits >> 6 & 0xFF), b(bits >> 23), c(bits >> 14 & 0x1FF)
    {
    }

    unsigned int operation, a, b, c;
};

using Constant = std::optional<std::string_view>;  // without a value where it is no text

std::vector<Constant> GetConstants(Reader& reader)
{
    std::vector<Constant> constants;
    for (int left = reader.Get<int>(); left > 0 && reader.IsGood(); --left) {
        const int type = reader.Get<unsigned char>();
        constants.emplace_back();
        if (type == LUA_TSTRING) constants.back() = reader.GetText();
        if (type == LUA_TNUMBER) reader.Skip(sizeof(lua_Number));
        if (type == LUA_TBOOLEAN) reader.Skip(1);
    }
    return constants;
}

bool IsHarmless(const Instruction& instruction, const std::vector<Constant>& constants,
                const std::vector<const char*>& methods)
{
    const auto [operation, a, b, c] = instruction;
    if (operation >= std::size(Reads)) return false;
    const int touched = Reads[operation] & ((a == 0 ? A : None) | (b == 0 ? B : None) | (c == 0 ? C : None));
    if (touched == None) return true;
    const auto isMethod = [&] {
        return std::ranges::any_of(methods,
                                   [&](const char* name) { return constants[c - FirstConstant] == name; });
    };
    const bool hasName = c >= FirstConstant && c - FirstConstant < constants.size() &&
                         constants[c - FirstConstant].has_value();
    switch (operation) {
        case GetTable:
            return hasName && !isMethod();
        case Self:
            return hasName && isMethod();
        case Equal:
            return b >= FirstConstant || c >= FirstConstant;
        case Return:
            return b == 1;
        default:
            return false;
    }
}

std::string GetHeader()
{
    constexpr char version = 0x51, format = 0, isLittleEndian = 1, isIntegral = 0;
    return std::string(LUA_SIGNATURE) + version + format + isLittleEndian + char{sizeof(int)} +
           char{sizeof(std::size_t)} + char{sizeof(std::uint32_t)} + char{sizeof(lua_Number)} + isIntegral;
}

nxLuaParameterUse ReadUse(std::string_view bytes, const std::vector<const char*>& methods)
{
    Reader reader(bytes);
    if (!reader.Begins(GetHeader())) return nxLuaParameterUse::Any;
    reader.GetText();                  // the source
    reader.Skip(2 * sizeof(int) + 1);  // its first and last line, the count of upvalues
    const auto parameters = reader.Get<unsigned char>();
    const auto varargs = reader.Get<unsigned char>();
    reader.Skip(1);  // the size of its stack
    if (reader.IsGood() && parameters == 0 && varargs == 0) return nxLuaParameterUse::None;
    std::vector<Instruction> instructions;
    for (int left = reader.Get<int>(); left > 0 && reader.IsGood(); --left)
        instructions.emplace_back(reader.Get<std::uint32_t>());
    const std::vector<Constant> constants = GetConstants(reader);
    const bool onlyReads = reader.IsGood() && parameters != 0 && varargs == 0 &&
                           std::ranges::all_of(instructions, [&](const Instruction& instruction) {
                               return IsHarmless(instruction, constants, methods);
                           });
    return onlyReads ? nxLuaParameterUse::Reads : nxLuaParameterUse::Any;
}

#endif

}  // namespace

nxLuaParameterUse nxLuaFindParameterUse(lua_State* L, const std::vector<const char*>& methods)
{
    std::string code;
    lua_dump(L, Write, &code);
    return ReadUse(code, methods);
}
