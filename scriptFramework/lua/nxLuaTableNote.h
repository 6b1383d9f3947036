#pragma once

#include <cstddef>
#include <cstdint>
#include <lua.hpp>

// What the binding knows of a wrapper on demand. It lies in the table's own block of memory, behind what Lua
// has there, so it is found without a look-up, goes with the table, and no script can reach it.
struct nxLuaTableNote
{
    void* packed = nullptr;   // see nxLuaPackedHandle; null for any other table
    std::uint64_t given = 0;  // by row, a bit for each function that it has had or was told to forget

    // False for an engine on which watching Lua's table functions would cost more than is won by making
    // wrappers on demand.
#ifdef LUAJIT_VERSION
    static constexpr bool IsUsed = false;
#else
    static constexpr bool IsUsed = true;
#endif

    static constexpr std::size_t TableBytes = 64;  // of a table, on 64 bits
    // Of what the state's allocator hands out for a size that Lua asks for. Blocks of other kinds that are as
    // large as a table have room for a note too.
    static constexpr std::size_t AddRoom(std::size_t size)
    {
        return IsUsed && size == TableBytes ? size + sizeof(nxLuaTableNote) : size;
    }

    static nxLuaTableNote& Of(const void* table)
    {
        return *reinterpret_cast<nxLuaTableNote*>(reinterpret_cast<std::uintptr_t>(table) + TableBytes);
    }
};
