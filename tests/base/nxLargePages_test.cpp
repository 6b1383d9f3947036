#include "base/memory/nxLargePages.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

constexpr std::size_t Large = std::size_t{2} << 20;

// Of the memory, how many bytes the system was asked to provide in large pages; with their first in `begin`.
std::size_t CountAsked(const char* memory, std::size_t bytes, std::uintptr_t& begin)
{
    const auto from = reinterpret_cast<std::uintptr_t>(memory);
    std::ifstream maps("/proc/self/smaps");
    std::string line;
    std::uintptr_t first = 0, last = 0;
    std::size_t asked = 0;
    while (std::getline(maps, line)) {
        std::istringstream words(line);
        std::uintptr_t start = 0, end = 0;
        char dash = 0;
        if (words >> std::hex >> start >> dash >> end && dash == '-') {
            first = std::max(start, from);
            last = std::min(end, from + bytes);
        } else if (line.starts_with("VmFlags:") && line.find(" hg") != std::string::npos && first < last) {
            if (asked == 0) begin = first;
            asked += last - first;
        }
    }
    return asked;
}

}  // namespace

TEST(nxLargePages, WholeOnesInsideTheMemoryAreAskedFor)
{
    // Some systems have no large pages, and some do not tell what was asked for.
    for (const char* path : {"/sys/kernel/mm/transparent_hugepage/enabled", "/proc/self/smaps"})
        if (!std::filesystem::exists(path)) GTEST_SKIP() << path;
    const struct
    {
        std::size_t offset, bytes, askedOffset, asked;
    } rows[] = {
        {0, Large, 0, Large},
        {0, Large - 1, 0, 0},
        {16, Large, 0, 0},
        {16, 2 * Large, Large, Large},
        {16, 3 * Large, Large, 2 * Large},
        {Large - 16, Large + 15, 0, 0},
        {Large - 16, Large + 16, Large, Large},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.offset) + " " + std::to_string(row.bytes));
        constexpr std::size_t size = 5 * Large;
        void* const mapped =
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        ASSERT_NE(mapped, MAP_FAILED);
        const auto address = reinterpret_cast<std::uintptr_t>(mapped);
        char* const memory = static_cast<char*>(mapped) + (Large - address % Large) % Large;
        memory[row.offset] = 'x';
        nxUseLargePages(memory + row.offset, row.bytes);
        EXPECT_EQ(memory[row.offset], 'x');
        std::uintptr_t begin = 0;
        EXPECT_EQ(CountAsked(static_cast<char*>(mapped), size, begin), row.asked);
        if (row.asked != 0) {
            EXPECT_EQ(begin, reinterpret_cast<std::uintptr_t>(memory + row.askedOffset));
        }
        munmap(mapped, size);
    }
}
