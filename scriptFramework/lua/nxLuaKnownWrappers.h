#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// What a few wrappers on demand hold, by the address of the table, so that calling a method of the same
// objects again and again need not look it up there. The state's allocator says which blocks go, so an
// address never stands for another table than the one that was noted. One thread at a time, as the state.
class nxLuaKnownWrappers
{
public:
    // Null for a table that is not known.
    void* Find(const void* table) const
    {
        const Known& known = _known[_GetPlace(table)];
        return known.table == table ? known.packed : nullptr;
    }
    void Note(const void* table, void* packed) { _known[_GetPlace(table)] = {table, packed}; }
    // The block goes, or is no wrapper on demand any more.
    void Forget(const void* block)
    {
        Known& known = _known[_GetPlace(block)];
        if (known.table == block) known = {};
    }

private:
    struct Known
    {
        const void* table = nullptr;
        void* packed = nullptr;  // see nxLuaPackedHandle
    };
    static constexpr std::size_t Count = 16;

    // Tables lie in a pool of blocks of 64 bytes.
    static std::size_t _GetPlace(const void* table)
    {
        return reinterpret_cast<std::uintptr_t>(table) / 64 % Count;
    }

    std::array<Known, Count> _known;
};
