#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The string keys of a class metatable with their rows, and the names of the functions, found by the address
// of the string, which Lua keeps once. Good as long as something holds the keys and nobody else can change
// the metatable.
class nxLuaKeyMap
{
public:
    static constexpr int Absent = -1;
    static constexpr int Metamethod = -2;
    static constexpr int FirstFunction = -3;  // the next ones are below

    // Makes room for that many keys, and forgets all.
    void Reset(std::size_t count);
    void Insert(const void* key, int row);
    int Find(const void* key) const
    {
        if (_slots.empty()) return Absent;
        for (std::size_t i = _Hash(key);; ++i) {
            const Slot& slot = _slots[i & _mask];
            if (slot.key == key || slot.key == nullptr) return slot.row;
        }
    }

private:
    struct Slot
    {
        const void* key = nullptr;
        int row = Absent;
    };
    static std::size_t _Hash(const void* key) { return reinterpret_cast<std::uintptr_t>(key) / 16; }

    std::vector<Slot> _slots;  // a power of two, half of them free
    std::size_t _mask = 0;
};
