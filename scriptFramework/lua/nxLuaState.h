#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

struct lua_State;

// An error that Lua raised outside any protected call, such as a lack of memory. Thrown by the panic handler
// through the entry that was called, which turns it into its failure; it never passes through running Lua code.
class nxLuaPanic : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Memory for one Lua state: blocks up to 512 bytes come from free lists by size, larger ones from malloc. The
// wrapper tables of a callback die young and alike, so nearly every one is served from the block of an earlier
// one. Memory of the free lists goes back to the system only when the pool dies.
class nxLuaPool
{
public:
    nxLuaPool() = default;
    ~nxLuaPool();
    nxLuaPool(const nxLuaPool&) = delete;
    nxLuaPool& operator=(const nxLuaPool&) = delete;

    // Lua's allocator contract: newSize 0 frees; null means out of memory.
    void* Reallocate(void* block, std::size_t oldSize, std::size_t newSize);

    // Bytes in use above which Reallocate refuses to grow; 0 for no limit.
    void SetLimit(std::size_t bytes) { _limit = bytes; }
    std::size_t GetBytesInUse() const { return _inUse; }
    // Requests served so far, by free list or by the system.
    std::uint64_t GetAllocationCount() const { return _allocations; }

private:
    static constexpr std::size_t Granule = 16;
    static constexpr std::size_t LargestPooled = 512;
    static constexpr std::size_t ChunkSize = 64 * 1024;

    struct Free
    {
        Free* next;
    };

    void* _Allocate(std::size_t size);
    void _Release(void* block, std::size_t size);

    Free* _free[LargestPooled / Granule + 1] = {};
    std::vector<void*> _chunks;
    char* _chunkNext = nullptr;
    char* _chunkEnd = nullptr;
    std::size_t _inUse = 0;
    std::size_t _limit = 0;
    std::uint64_t _allocations = 0;
};

// The string keys of a class metatable with their rows, found by the address of the string, which Lua keeps once.
// Good as long as the metatable holds the keys and nobody else can change it.
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
            if (slot.key == key) return slot.row;
            if (slot.key == nullptr) return Absent;
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

    nxLuaState();  // opens the state with all standard libraries; throws without memory
    ~nxLuaState();  // closes it
    nxLuaState(const nxLuaState&) = delete;
    nxLuaState& operator=(const nxLuaState&) = delete;

    static nxLuaState& Of(lua_State* L);
    lua_State* GetState() const { return _L; }
    nxLuaPool& GetPool() { return _pool; }

    ClassReferences& References(unsigned int classIndex);
    const ClassReferences& References(unsigned int classIndex) const { return _classes[classIndex]; }

    // True once the script may hold a class metatable, by getmetatable, debug.getmetatable or
    // debug.getregistry: from then on the metatables are read and written as a script may see them.
    bool AreMetatablesExposed() const { return _metatablesExposed; }

    using Body = int (*)(lua_State* L, void* context);
    // The time for which a pushed body can be run: its context lives no longer.
    class PushedBody
    {
    public:
        explicit PushedBody(nxLuaState& state) : _state(state) {}
        ~PushedBody() { _state._body = nullptr; }
        PushedBody(const PushedBody&) = delete;
        PushedBody& operator=(const PushedBody&) = delete;

    private:
        nxLuaState& _state;
    };
    // Leaves a function on the stack that runs body(context) once, for a lua_pcall with no arguments: whatever
    // body does to Lua, memory errors included, then ends as that call's status. body returns the count of its
    // results. Keep what it returns until the call has ended.
    [[nodiscard]] PushedBody PushBody(Body body, void* context);

    // Makes room on the stack, if need be by dropping what loads and look-ups left there: nothing relies on it.
    void MakeRoom(int values);

    // Sets the collector's pause by the size of the heap; to be called now and then. A small heap may grow to
    // several times its size before it is walked again, since walking it costs more than its garbage.
    void TuneCollector();

private:
    void _WatchMetatableAccess();
    void _ExposeMetatables();
    template <int watched>
    static int _Watch(lua_State* L);
    static int _Trampoline(lua_State* L);

    nxLuaPool _pool;
    std::vector<ClassReferences> _classes;
    bool _metatablesExposed = false;
    struct Watched
    {
        int (*function)(lua_State*) = nullptr;  // null where the engine implements it without one
        int reference = 0;                      // then it is called by its registry reference
    };
    Watched _watched[3];
    int _trampoline = 0;
    // What the trampoline runs next. It is kept here and not on the stack, so that a script which finds the
    // trampoline in the registry has nothing to call with it.
    Body _body = nullptr;
    void* _context = nullptr;
    lua_State* _L = nullptr;
};
