#pragma once

#include <cstdint>

#include "scriptFramework/lua/nxLuaFrames.h"

class nxLuaClass;

// The userdata of a wrapper table: the object, and what must be known to use it safely.
struct nxLuaHandle
{
    // Lua's own libraries take the first word of a userdata for a file or a library when a script has given
    // it their metatable; null is a closed one.
    void* none;
    void* object;
    const nxLuaClass* type;
    nxLuaFrames::Life life;
    std::uint64_t given;  // by row, the functions that a wrapper on demand has had, or was told to forget
};
