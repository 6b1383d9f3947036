#include "scriptFramework/lua/nxLuaKeyMap.h"

#include <bit>

void nxLuaKeyMap::Reset(std::size_t count)
{
    const std::size_t size = std::bit_ceil(2 * count + 1);
    _slots.assign(size, {});
    _mask = size - 1;
}

void nxLuaKeyMap::Insert(const void* key, int row)
{
    std::size_t i = _Hash(key) & _mask;
    while (_slots[i].key != nullptr)
        i = (i + 1) & _mask;
    _slots[i] = {key, row};
}
