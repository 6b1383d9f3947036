#include "base/values/nxStringHelper.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>

namespace {

TEST(nxStringHelper, DoublesGoThereAndBack)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const double value = std::bit_cast<double>(std::uint64_t{random()});
        if (!std::isnormal(value)) continue;
        const std::string text = nxStringHelper::GetAsString(value);
        double read = 0;
        ASSERT_TRUE(nxStringHelper::SetFromString(text, read, '.').IsSuccess()) << text;
        ASSERT_EQ(read, value) << text;
        ASSERT_TRUE(std::abs(value) >= 1e15 || text.find('e') == std::string::npos) << text;
    }
    EXPECT_EQ(nxStringHelper::GetAsString(-2147483647 - 1), "-2147483648");
}

}  // namespace
