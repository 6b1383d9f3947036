#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

// Memory for one Lua state: blocks up to 512 bytes come from free lists by size, larger ones from malloc. The
// wrapper tables of a callback die young and alike, so nearly every one is served from the block of an
// earlier one. Memory of the free lists goes back to the system only when the pool dies.
class nxLuaPool
{
public:
    nxLuaPool() = default;
    ~nxLuaPool();
    nxLuaPool(const nxLuaPool&) = delete;
    nxLuaPool& operator=(const nxLuaPool&) = delete;

    // Lua's allocator contract: newSize 0 frees; null means out of memory.
    void* Reallocate(void* block, std::size_t oldSize, std::size_t newSize)
    {
        // Nearly all requests: one small block taken from its free list, or given back, or nothing at all, as
        // a table without an array asks for.
        if (block == nullptr) {
            if (newSize == 0) return nullptr;
            if (newSize <= LargestPooled) {
                Free*& list = _free[(newSize - 1) / Granule];
                if (list != nullptr && _inUse + newSize <= _limit.load(std::memory_order_relaxed)) {
                    void* result = list;
                    list = list->next;
                    _inUse += newSize;
                    ++_allocations;
                    return result;
                }
            }
        } else if (newSize == 0 && oldSize - 1 < LargestPooled) {
            Free*& list = _free[(oldSize - 1) / Granule];
            list = new (block) Free{list};
            _inUse -= oldSize;
            return nullptr;
        }
        return _ReallocateSlowly(block, oldSize, newSize);
    }

    // Bytes of blocks above which Reallocate refuses to grow; 0 for no limit. On any thread.
    void SetLimit(std::size_t bytes)
    {
        _limit.store(bytes == 0 ? Unlimited : bytes, std::memory_order_relaxed);
    }
    bool IsLimited() const { return _limit.load(std::memory_order_relaxed) != Unlimited; }
    // Whether Reallocate has ever refused for that.
    bool HasRefused() const { return _hasRefused; }
    // What the script's objects hold elsewhere, for the figure alone. On any thread.
    void SetHeld(std::size_t bytes) { _held.store(bytes, std::memory_order_relaxed); }
    // Bytes of blocks, and those together with what objects hold.
    std::size_t GetHeapBytes() const { return _inUse; }
    std::size_t GetBytesInUse() const { return _inUse + _held.load(std::memory_order_relaxed); }
    // Requests served so far, by free list or by the system.
    std::uint64_t GetAllocationCount() const { return _allocations; }

private:
    static constexpr std::size_t Granule = 16;
    static constexpr std::size_t LargestPooled = 512;
    static constexpr std::size_t ChunkSize = 64 * 1024;
    static constexpr std::size_t Unlimited = ~std::size_t{0};

    struct Free
    {
        Free* next;
    };

    // Apart, so that the common case saves no registers for it.
    [[gnu::noinline, gnu::cold]] void* _ReallocateSlowly(void* block, std::size_t oldSize,
                                                         std::size_t newSize);
    void* _Allocate(std::size_t size);
    void _Release(void* block, std::size_t size);

    Free* _free[LargestPooled / Granule] = {};
    std::vector<void*> _chunks;
    char* _chunkNext = nullptr;
    char* _chunkEnd = nullptr;
    std::size_t _inUse = 0;
    std::atomic<std::size_t> _limit = Unlimited;
    std::atomic<std::size_t> _held = 0;
    bool _hasRefused = false;
    std::uint64_t _allocations = 0;
};
