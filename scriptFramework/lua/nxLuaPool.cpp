#include "scriptFramework/lua/nxLuaPool.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

nxLuaPool::~nxLuaPool()
{
    for (void* chunk : _chunks)
        std::free(chunk);
}

void* nxLuaPool::_Allocate(std::size_t size)
{
    if (size > LargestPooled) return std::malloc(size);
    Free*& list = _free[(size - 1) / Granule];
    if (list != nullptr) {
        void* block = list;
        list = list->next;
        return block;
    }
    const std::size_t rounded = (size + Granule - 1) / Granule * Granule;
    if (static_cast<std::size_t>(_chunkEnd - _chunkNext) < rounded) {
        void* chunk = std::malloc(ChunkSize);
        if (chunk == nullptr) return nullptr;
        _chunks.push_back(chunk);
        _chunkNext = static_cast<char*>(chunk);
        _chunkEnd = _chunkNext + ChunkSize;
    }
    void* block = _chunkNext;
    _chunkNext += rounded;
    return block;
}

void nxLuaPool::_Release(void* block, std::size_t size)
{
    if (size > LargestPooled) {
        std::free(block);
        return;
    }
    Free*& list = _free[(size - 1) / Granule];
    list = new (block) Free{list};
}

void* nxLuaPool::_ReallocateSlowly(void* block, std::size_t oldSize, std::size_t newSize)
{
    if (block == nullptr) oldSize = 0;
    if (newSize == 0) {
        if (block != nullptr) _Release(block, oldSize);
        _inUse -= oldSize;
        return nullptr;
    }
    if (newSize > oldSize && _inUse + (newSize - oldSize) > _limit.load(std::memory_order_relaxed)) {
        _hasRefused = true;
        return nullptr;
    }
    ++_allocations;
    void* result;
    if (block != nullptr && oldSize > LargestPooled && newSize > LargestPooled) {
        result = std::realloc(block, newSize);
        if (result == nullptr) return nullptr;
    } else {
        result = _Allocate(newSize);
        if (result == nullptr) return nullptr;
        if (block != nullptr) {
            std::memcpy(result, block, std::min(oldSize, newSize));
            _Release(block, oldSize);
        }
    }
    _inUse += newSize - oldSize;
    return result;
}
