#include "scriptFramework/lua/nxLuaArity.h"

#include <cstring>
#include <lua.hpp>

namespace {

// The interface of Lua 5.1 tells the parameters of a function by its precompiled form only. It begins with a
// header, then come, a block each: the size of the source's name, that name unless the size is 0, two line
// numbers, and one byte each for the upvalues, the parameters and the flags of `...`.
class Shape
{
public:
    bool TakesArguments() const { return !_isRead || _parameters != 0 || _varargs != 0; }

    static int Write(lua_State*, const void* block, std::size_t size, void* shape)
    {
        return static_cast<Shape*>(shape)->_Take(static_cast<const unsigned char*>(block), size) ? 0 : 1;
    }

private:
    // False when it has seen enough.
    bool _Take(const unsigned char* block, std::size_t size)
    {
        constexpr unsigned char signature[] = {0x1B, 'L', 'u', 'a', 0x51};
        switch (_blocks++) {
            case 0:
                return size > sizeof signature && std::memcmp(block, signature, sizeof signature) == 0;
            case 1: {
                std::size_t length = 0;
                if (size != sizeof length) return false;
                std::memcpy(&length, block, sizeof length);
                if (length == 0) ++_blocks;
                return true;
            }
            case 6:
                _parameters = block[0];
                return size == 1;
            case 7:
                _varargs = block[0];
                _isRead = size == 1;
                return false;
            default:
                return true;
        }
    }

    int _blocks = 0;
    bool _isRead = false;
    unsigned char _parameters = 0;
    unsigned char _varargs = 0;
};

}  // namespace

bool nxLuaTakesArguments(lua_State* L)
{
    Shape shape;
    lua_dump(L, Shape::Write, &shape);
    return shape.TakesArguments();
}
