#include "tests/support/nxAllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long long> allocations = 0;
std::atomic<std::size_t> lacking = 0;

}  // namespace

long long nxAllocationCount::Get()
{
    return allocations;
}

void nxAllocationCount::Lack(std::size_t size)
{
    lacking = size;
}

void* operator new(std::size_t size)
{
    ++allocations;
    const bool isLacking = lacking != 0 && size - lacking <= 64;
    if (void* const memory = isLacking ? nullptr : std::malloc(size)) return memory;
    throw std::bad_alloc();
}

// All of the family: memory of the one form may be freed by the other.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
