#include "host/market/nxBookSide.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

// Any of some 4,000 numbers, negative ones too, each in one of the ways to write it.
nxDecimal MakePrice(std::mt19937& random)
{
    const auto number = static_cast<long long>(random() % 4'000) - 500;
    constexpr long long zeros[] = {1, 10, 10'000'000'000};
    constexpr unsigned char places[] = {2, 3, 12};
    const std::size_t form = random() % 3;
    return nxDecimal::FromMantissa(number * zeros[form], places[form]);
}

using Book = std::map<nxDecimal, unsigned int>;

Book Read(const nxBookSide& levels, nxSide side, const nxDecimal& from)
{
    Book read;
    nxDecimal before;
    levels.ForEach(
        [&](const nxBookSide::Level& level) {
            EXPECT_TRUE(!before.IsValid() || nxIsBetter(side, before, level.price));
            before = level.price;
            read[level.price] = level.volume;
            return true;
        },
        from);
    return read;
}

// The levels from that price on, the better ones left out.
Book Cut(const Book& book, nxSide side, const nxDecimal& from)
{
    Book cut;
    for (const auto& [price, volume] : book)
        if (!from.IsValid() || !nxIsBetter(side, price, from)) cut[price] = volume;
    return cut;
}

class nxBookSideTest : public ::testing::TestWithParam<nxSide>
{
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(, nxBookSideTest, ::testing::ValuesIn(nxSides),
                         [](const auto& test) { return nxGetText(test.param); });

// The book grows, shrinks from its best level on, as in a fall of the prices, and grows again.
TEST_P(nxBookSideTest, IsAMapByPrice)
{
    const nxSide side = GetParam();
    std::mt19937 random(7);
    nxBookSide levels(side);
    Book book;
    for (int step = 0; step < 60'000; ++step) {
        const bool shrinks = step / 10'000 % 2 == 1 && !book.empty();
        nxDecimal price = MakePrice(random);
        if (shrinks && random() % 2 == 0) price = levels.GetBest().price;
        const unsigned int volume =
            shrinks || random() % 4 == 0 ? 0 : static_cast<unsigned int>(random() % 9);
        levels.Set(price, nxVolume(volume));
        if (volume == 0)
            book.erase(price);
        else
            book[price] = volume;
        ASSERT_EQ(levels.IsEmpty(), book.empty());
        ASSERT_EQ(levels.GetVolume(price), volume);
        if (book.empty()) continue;
        const auto best = side == nxSide::Buy ? std::prev(book.end()) : book.begin();
        ASSERT_EQ(levels.GetBest().price, best->first) << step;
        ASSERT_EQ(levels.GetBest().volume, best->second);
        if (step % 500 != 0) continue;
        const nxDecimal from = step % 1'000 == 0 ? nxDecimal() : MakePrice(random);
        ASSERT_EQ(Read(levels, side, from), Cut(book, side, from)) << step;
    }
    levels.Clear();
    EXPECT_TRUE(levels.IsEmpty());
    EXPECT_TRUE(Read(levels, side, {}).empty());
    EXPECT_EQ(levels.GetVolume(nxDecimal::FromMantissa(1, 2)), 0u);
}

TEST_P(nxBookSideTest, KeepsThePlacesAndLeavesMarksAlone)
{
    nxBookSide levels(GetParam());
    levels.Set(nxDecimal::FromMantissa(100, 1), nxVolume(3u));
    levels.Set(nxDecimal::FromMantissa(1000, 2), nxVolume(4u));
    levels.Set({}, nxVolume(5u));
    levels.Set(nxDecimal::FromMantissa(11, 0), {});
    EXPECT_EQ(levels.GetBest().price.GetAsString(), "10.0");
    EXPECT_EQ(levels.GetBest().volume, 4u);
    EXPECT_EQ(levels.GetVolume(nxDecimal::FromMantissa(11, 0)), 0u);
    EXPECT_EQ(levels.GetVolume({}), 0u);
}
