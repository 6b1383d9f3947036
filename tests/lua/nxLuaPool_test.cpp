#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "scriptFramework/lua/nxLuaPool.h"

namespace {

// Random requests against a model that remembers what each block must hold.
TEST(nxLuaPool, KeepsWhatBlocksHold)
{
    struct Block
    {
        unsigned char* bytes = nullptr;
        std::size_t size = 0;
        unsigned char fill = 0;

        bool Holds(const unsigned char* at, std::size_t count) const
        {
            return std::all_of(at, at + count, [this](unsigned char byte) { return byte == fill; });
        }
    };
    std::mt19937 random(20240131);
    nxLuaPool pool;
    std::vector<Block> blocks(64);
    std::size_t inUse = 0;
    for (int i = 0; i < 50000; ++i) {
        Block& block = blocks[random() % blocks.size()];
        ASSERT_TRUE(block.Holds(block.bytes, block.size)) << "step " << i;
        // Sizes near the border between free lists and the system come often.
        const std::size_t size = random() % 4 == 0   ? 0
                                 : random() % 3 == 0 ? 500 + random() % 30
                                                     : random() % 1500;
        auto* bytes = static_cast<unsigned char*>(pool.Reallocate(block.bytes, block.size, size));
        ASSERT_EQ(bytes == nullptr, size == 0);
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignof(std::max_align_t), 0u);
        ASSERT_TRUE(block.Holds(bytes, std::min(size, block.size))) << "step " << i;
        inUse += size - block.size;
        block = {bytes, size, static_cast<unsigned char>(random())};
        if (size != 0) std::memset(bytes, block.fill, size);
        ASSERT_EQ(pool.GetBytesInUse(), inUse);
    }
    for (Block& block : blocks)
        pool.Reallocate(block.bytes, block.size, 0);
    EXPECT_EQ(pool.GetBytesInUse(), 0u);
}

TEST(nxLuaPool, RefusesToGrowBeyondItsLimit)
{
    nxLuaPool pool;
    pool.SetLimit(1000);
    void* first = pool.Reallocate(nullptr, 0, 600);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(pool.Reallocate(nullptr, 0, 401), nullptr);
    EXPECT_EQ(pool.Reallocate(first, 600, 1001), nullptr);
    EXPECT_EQ(pool.GetBytesInUse(), 600u);
    void* second = pool.Reallocate(nullptr, 0, 400);
    EXPECT_NE(second, nullptr);
    pool.SetLimit(100);
    first = pool.Reallocate(first, 600, 300);  // shrinking cannot be refused
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(pool.Reallocate(nullptr, 0, 1), nullptr);
    pool.SetLimit(0);
    first = pool.Reallocate(first, 300, 5000);
    EXPECT_NE(first, nullptr);
    pool.Reallocate(first, 5000, 0);
    pool.Reallocate(second, 400, 0);
    EXPECT_EQ(pool.GetBytesInUse(), 0u);
}

// An old size without a block is Lua's hint at a type, not a size.
TEST(nxLuaPool, IgnoresTheOldSizeOfNoBlock)
{
    nxLuaPool pool;
    EXPECT_EQ(pool.Reallocate(nullptr, 7, 0), nullptr);
    void* block = pool.Reallocate(nullptr, 7, 10);
    EXPECT_EQ(pool.GetBytesInUse(), 10u);
    pool.Reallocate(block, 10, 0);
}

}  // namespace
