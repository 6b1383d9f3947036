// Linked into algoserver by --wrap of these two functions: puts the injector, where it is preloaded, in front
// of the allocator of each Lua state, of which the C library sees only large blocks.

#include <dlfcn.h>

#include <cstddef>

struct lua_State;
using Allocate = void* (*)(void* data, void* block, std::size_t oldSize, std::size_t newSize);

extern "C" lua_State* __real_lua_newstate(Allocate allocate, void* data);
extern "C" Allocate __real_lua_getallocf(lua_State* L, void** data);

namespace {

struct Real
{
    Allocate allocate;
    void* data;
    bool (*strikes)();
};

void* AllocateOrFail(void* data, void* block, std::size_t oldSize, std::size_t newSize)
{
    const Real& real = *static_cast<Real*>(data);
    const bool isMore = newSize != 0 && (block == nullptr || newSize > oldSize);
    return isMore && real.strikes != nullptr && real.strikes()
               ? nullptr
               : real.allocate(real.data, block, oldSize, newSize);
}

}  // namespace

extern "C" lua_State* __wrap_lua_newstate(Allocate allocate, void* data)
{
    // Goes with the process: the state may allocate until its end.
    const auto strikes = reinterpret_cast<bool (*)()>(dlsym(RTLD_DEFAULT, "nxFaultStrikesLua"));
    return __real_lua_newstate(AllocateOrFail, new Real{allocate, data, strikes});
}

// As if nothing stood in front.
extern "C" Allocate __wrap_lua_getallocf(lua_State* L, void** data)
{
    void* known = nullptr;
    __real_lua_getallocf(L, &known);
    const Real& real = *static_cast<Real*>(known);
    if (data != nullptr) *data = real.data;
    return real.allocate;
}
