#include "base/memory/nxLargePages.h"

#include <sys/mman.h>

#include <cstdint>

void nxUseLargePages(void* memory, std::size_t bytes)
{
    constexpr std::uintptr_t size = std::uintptr_t{2} << 20;
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t begin = (address + size - 1) / size * size;
    const std::uintptr_t end = (address + bytes) / size * size;
    // A hint: what comes of it does not matter.
    if (begin < end) static_cast<void>(madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
}
