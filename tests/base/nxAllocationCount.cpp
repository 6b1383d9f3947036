#include "tests/base/nxAllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long long> allocations = 0;

}  // namespace

long long nxAllocationCount::Get()
{
    return allocations;
}

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
