#include "base/threads/nxStackThread.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>

namespace {

// Takes a KiB of stack, and a little more, for each level.
int Descend(int levels)
{
    volatile char block[1024];
    block[0] = static_cast<char>(levels);
    return levels == 0 ? 0 : Descend(levels - 1) + (block[0] == static_cast<char>(levels) ? 1 : 0);
}

TEST(nxStackThread, GivesTheStackAndHandsOnWhatIsThrown)
{
    int levels = 0;
    nxStackThread::Run(nxStackThread::ForScripts, [&] { levels = Descend(30000); });
    EXPECT_EQ(levels, 30000);
    EXPECT_THROW(nxStackThread::Run(1 << 20, [] { throw std::out_of_range("x"); }), std::out_of_range);
    EXPECT_THROW(nxStackThread::Run(std::size_t{1} << 60, [] {}), std::system_error);
}

}  // namespace
