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
};

// The same in the 64 bits of a light userdata, for a wrapper on demand: a full one would be another object
// for Lua to make and to sweep, and Lua looks at all full ones at once when it has marked what lives, which
// is what stops a script for longest. From above: whether the object lasts, 8 bits of its class, and its
// address, or the slot where the call keeps it and the life.
class nxLuaPackedHandle
{
public:
    static constexpr unsigned int ClassCount = 256;

    // Null where an object cannot be told so.
    static void* Pack(unsigned int classIndex, void* object, nxLuaFrames::Life life, nxLuaFrames& frames)
    {
        const bool lasts = life.GetNumber() == 0;
        const std::uint64_t head = std::uint64_t{lasts} << LastsBit | std::uint64_t{classIndex} << ClassBit;
        if (classIndex >= ClassCount) return nullptr;
        if (lasts) {
            const auto address = reinterpret_cast<std::uintptr_t>(object);
            return address >> AddressBits == 0 ? reinterpret_cast<void*>(head | address) : nullptr;
        }
        const unsigned int slot = frames.Keep(object, life);
        if (slot == nxLuaFrames::SlotCount) return nullptr;
        return reinterpret_cast<void*>(head | std::uint64_t{slot} << SlotBit | life.GetNumber());
    }

    explicit nxLuaPackedHandle(void* bits) : _bits(reinterpret_cast<std::uintptr_t>(bits)) {}

    unsigned int GetClassIndex() const { return static_cast<unsigned int>(_bits >> ClassBit) % ClassCount; }
    nxLuaFrames::Life GetLife() const
    {
        return nxLuaFrames::Life(_Lasts() ? 0 : _bits & ((std::uint64_t{1} << nxLuaFrames::Life::Bits) - 1));
    }
    // While its life is not over.
    void* GetObject(const nxLuaFrames& frames) const
    {
        if (!_Lasts())
            return frames.GetKept(static_cast<unsigned int>(_bits >> SlotBit) % nxLuaFrames::SlotCount);
        return reinterpret_cast<void*>(_bits & ((std::uint64_t{1} << AddressBits) - 1));
    }

private:
    static constexpr unsigned int LastsBit = 63;
    static constexpr unsigned int ClassBit = 55;
    static constexpr unsigned int AddressBits = 48;
    static constexpr unsigned int SlotBit = nxLuaFrames::Life::Bits;
    static_assert(ClassBit - SlotBit >= 8 && nxLuaFrames::SlotCount == 256);

    bool _Lasts() const { return _bits >> LastsBit != 0; }

    std::uint64_t _bits;
};
