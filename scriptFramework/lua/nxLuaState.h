#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

struct lua_State;
class nxExactRandom;

// The error value at the top of the stack as a text, also of a script that raises something else than a
// string.
std::string nxLuaErrorText(lua_State* L);

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
                if (list != nullptr && _inUse + newSize <= _limit) {
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

    // Bytes in use above which Reallocate refuses to grow; 0 for no limit.
    void SetLimit(std::size_t bytes) { _limit = bytes == 0 ? Unlimited : bytes; }
    bool IsLimited() const { return _limit != Unlimited; }
    std::size_t GetBytesInUse() const { return _inUse; }
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
    std::size_t _limit = Unlimited;
    std::uint64_t _allocations = 0;
};

// The string keys of a class metatable with their rows, found by the address of the string, which Lua keeps
// once. Good as long as the metatable holds the keys and nobody else can change it.
class nxLuaKeyMap
{
public:
    static constexpr int Absent = -1;
    static constexpr int Metamethod = -2;

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

// What the binding keeps beside one lua_State: its memory, and per bound class the registry references that
// spare a look-up by name on each push. Reached from the lua_State alone. One thread at a time, as the state.
class nxLuaState
{
public:
    struct ClassReferences
    {
        const void* identity = nullptr;  // the class metatable, to be recognised by; null before registration
        int metatable = 0;               // registry reference of the class metatable
        int names = 0;                   // registry reference of a table of the interned names
        bool rowsFilled = false;         // the metatable holds the property rows
        nxLuaKeyMap keys;                // what the metatable holds, by key
    };

    nxLuaState();   // opens the state with all standard libraries; throws without memory
    ~nxLuaState();  // closes it
    nxLuaState(const nxLuaState&) = delete;
    nxLuaState& operator=(const nxLuaState&) = delete;

    // Closes the state before its time: finalizers of the script run, and may still use what is bound to it.
    // Nothing else may be called behind.
    void Close();

    // Raises a Lua error for a lua_State that no nxLuaState has opened.
    static nxLuaState& Of(lua_State* L);
    lua_State* GetState() const { return _L; }
    nxLuaPool& GetPool() { return _pool; }
    // The script's own random numbers; null for one that has the process's.
    std::unique_ptr<nxExactRandom> random;

    ClassReferences& References(unsigned int classIndex);
    const ClassReferences& References(unsigned int classIndex) const { return _classes[classIndex]; }

    // True once the script may hold a class metatable, by getmetatable, debug.getmetatable or
    // debug.getregistry: from then on the metatables are read and written as a script may see them.
    bool AreMetatablesExposed() const { return _metatablesExposed; }

    // Makes room on the stack, if need be by dropping what loads and look-ups left there: nothing relies on
    // it.
    void MakeRoom(int values = 16);  // enough for an entry with an object

    // Runs body(context), which may touch Lua outside any protected call. False and a text when an error, or
    // an exception of the host out of what a script hung on its globals, ended it; what it left running is
    // closed then.
    bool Protect(void (*body)(void* context), void* context, std::string& error);

    // Sets the collector's pause by the size of the heap; to be called now and then. A small heap may grow to
    // several times its size before it is walked again, since walking it costs more than its garbage.
    void TuneCollector();

private:
    void _WatchMetatableAccess();
    void _ExposeMetatables();
    template <int watched>
    static int _Watch(lua_State* L);

    nxLuaPool _pool;
    std::vector<ClassReferences> _classes;
    bool _metatablesExposed = false;
    struct Watched
    {
        int (*function)(lua_State*) = nullptr;  // null where the engine implements it without one
        int reference = 0;                      // then it is called by its registry reference
    };
    Watched _watched[3];
    lua_State* _L = nullptr;
};
