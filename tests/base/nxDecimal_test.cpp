#include "base/values/nxDecimal.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>

#include "base/values/nxInt128.h"

namespace {

constexpr int rounds = 20000;
constexpr long long maxMantissa = std::numeric_limits<long long>::max();
const nxRoundingMethodEnum nearest(nxRoundingMethod_Nearest);

nxDecimal Parse(const std::string& text)
{
    nxDecimal value;
    EXPECT_EQ(value.SetFromString(text).GetValue(), 0u) << text;
    return value;
}

nxInt128 PowerOfTen(int exponent)
{
    nxInt128 power = 1;
    while (exponent-- > 0)
        power *= 10;
    return power;
}

// The decimal as a whole number of 10^-18, which a mantissa and any places always fit.
nxInt128 Scaled(const nxDecimal& value)
{
    return value.GetMantissa() * PowerOfTen(18 - value.GetDecimalPlaces());
}

nxInt128 DivideHalfAway(nxInt128 numerator, nxInt128 denominator)
{
    const bool negative = (numerator < 0) != (denominator < 0);
    numerator = numerator < 0 ? -numerator : numerator;
    denominator = denominator < 0 ? -denominator : denominator;
    const nxInt128 quotient = numerator / denominator;
    const nxInt128 rounded = quotient + (numerator % denominator * 2 >= denominator ? 1 : 0);
    return negative ? -rounded : rounded;
}

// Random decimals of every size and count of places, with many that lie close to each other.
class Source
{
public:
    nxDecimal Next() { return nxDecimal::FromMantissa(Mantissa(), static_cast<unsigned char>(Below(19))); }
    long long Mantissa()
    {
        const auto bits = static_cast<long long>(_random() >> (1 + Below(63)));
        return Below(2) != 0 ? bits : -bits;
    }
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(_random() % limit); }
    std::uint64_t Bits() { return _random(); }

private:
    std::mt19937_64 _random{20240808};
};

TEST(nxDecimal, TextGoesThereAndBackAndGivesTheNearestDouble)
{
    Source source;
    for (int i = 0; i < rounds; ++i) {
        const nxDecimal value = source.Next();
        const nxDecimal read = Parse(value.GetAsString());
        ASSERT_EQ(read.GetMantissa(), value.GetMantissa()) << value.GetAsString();
        ASSERT_EQ(read.GetDecimalPlaces(), value.GetDecimalPlaces()) << value.GetAsString();
        ASSERT_EQ(value.GetAsDouble(), std::strtod(value.GetAsString().c_str(), nullptr));
    }
}

TEST(nxDecimal, ComparesExactlyAcrossPlaces)
{
    EXPECT_EQ(Parse("1.0"), Parse("1.00"));
    Source source;
    for (int i = 0; i < rounds; ++i) {
        const nxDecimal a = source.Next();
        nxDecimal b = source.Next();
        if (source.Below(2) != 0) {
            b = a;  // a near neighbour, written with more places where they fit
            b.Normalise(static_cast<unsigned char>(source.Below(19)));
            if (source.Below(2) != 0) b = nxDecimal::FromMantissa(b.GetMantissa() - 1, b.GetDecimalPlaces());
        }
        ASSERT_EQ(a < b, Scaled(a) < Scaled(b)) << a.GetAsString() << " " << b.GetAsString();
        ASSERT_EQ(a == b, Scaled(a) == Scaled(b)) << a.GetAsString() << " " << b.GetAsString();
    }
}

TEST(nxDecimal, MarksOrderBelowNumbersAndSpoilArithmetic)
{
    const nxDecimal null;
    const nxDecimal noChange{nxNoChangeInitalizer()};
    const nxDecimal least = nxDecimal::FromMantissa(-maxMantissa, 0);
    EXPECT_LT(null, noChange);
    EXPECT_LT(noChange, least);
    EXPECT_FALSE(null == nxDecimalZero);
    EXPECT_EQ(null.GetAsString() + null.GetAsLogString(), "NULL");
    EXPECT_EQ(noChange.GetAsString() + noChange.GetAsLogString(), "NO_CHANGE");
    EXPECT_TRUE(std::isnan(null.GetAsDouble()));
    for (const nxDecimal& mark : {null, noChange}) {
        EXPECT_TRUE((mark - nxDecimalOne).IsNull());
        EXPECT_TRUE((nxDecimalOne + mark).IsNull());
        EXPECT_TRUE((-mark).IsNull());
    }
    const std::map<nxDecimal, int> ordered = {{nxDecimalOne, 3}, {null, 0}, {least, 2}, {noChange, 1}};
    int expected = 0;
    for (const auto& [key, value] : ordered)
        EXPECT_EQ(value, expected++);
}

TEST(nxDecimal, AddsAndSubtractsExactlyOrGivesNull)
{
    Source source;
    int nulls = 0;
    for (int i = 0; i < rounds; ++i) {
        const nxDecimal a = source.Next();
        const nxDecimal b = source.Next();
        const int places = std::max(a.GetDecimalPlaces(), b.GetDecimalPlaces());
        for (const int sign : {1, -1}) {
            const nxDecimal result = sign > 0 ? a + b : a - b;
            const nxInt128 exact = Scaled(a) + sign * Scaled(b);
            const nxInt128 mantissa = exact / PowerOfTen(18 - places);
            const bool fits = mantissa <= maxMantissa && mantissa >= -maxMantissa;
            nulls += result.IsNull() ? 1 : 0;
            ASSERT_TRUE(result.IsValid() || !fits) << a.GetAsString() << " " << b.GetAsString();
            ASSERT_TRUE(result.IsNull() || Scaled(result) == exact)
                << a.GetAsString() << " " << b.GetAsString();
            ASSERT_TRUE(!fits || result.GetDecimalPlaces() == places)
                << a.GetAsString() << " " << b.GetAsString();
        }
    }
    EXPECT_GT(nulls, 100);
}

// Doubles in full by long division of decimal digits, with no 128-bit arithmetic shared with the code under
// test.
std::string RoundedDigits(double value, unsigned int places)
{
    char digits[1200];
    // 1074 is the most digits behind the point that a double has.
    std::snprintf(digits, sizeof digits, "%.1074f", std::abs(value));
    std::string text = digits;
    const std::size_t point = text.find('.');
    const bool roundsUp = text[point + 1 + places] >= '5';
    text.erase(point + 1 + places);
    text.erase(point, 1);
    if (roundsUp) {
        std::size_t i = text.size();
        while (i > 0 && text[i - 1] == '9')
            text[--i] = '0';
        if (i > 0)
            ++text[i - 1];
        else
            text.insert(0, "1");
    }
    if (places > 0) text.insert(text.size() - places, ".");
    const bool zero = text.find_first_not_of("0.") == std::string::npos;
    return (std::signbit(value) && !zero ? "-" : "") + text;
}

TEST(nxDecimal, RoundsTheExactBinaryValueOfADouble)
{
    Source source;
    int tested = 0;
    for (int i = 0; i < rounds / 4; ++i) {
        double value = 0;
        switch (source.Below(4)) {
            case 0:
                value = std::bit_cast<double>(source.Bits());
                break;
            case 1:
                value = static_cast<double>(source.Mantissa()) / 1e4;
                break;
            case 2:
                value = std::ldexp(static_cast<double>(source.Below(4001)) - 2000, -3);
                break;  // many halves
            default:
                value =
                    std::ldexp(static_cast<double>(source.Mantissa()), -static_cast<int>(source.Below(200)));
        }
        if (!std::isfinite(value) || std::abs(value) > 1e30) continue;
        const auto places = static_cast<unsigned char>(source.Below(19));
        const std::string expected = RoundedDigits(value, places);
        nxDecimal fits;
        const bool representable =
            fits.SetFromString(expected).IsSuccess() && fits.GetDecimalPlaces() == places;
        nxDecimal result = nxDecimalOne;
        result.SetFromDouble(value, places);
        ASSERT_EQ(result.GetAsString(), representable ? expected : "") << value << " to " << int{places};
        tested += representable ? 1 : 0;
    }
    EXPECT_GT(tested, rounds / 16);
}

TEST(nxDecimal, RoundsToTheNearestTick)
{
    nxDecimal unknownMethod = Parse("1.23");
    unknownMethod.Round(nxDecimalOne, nxRoundingMethodEnum());
    EXPECT_EQ(unknownMethod.GetAsString(), "1.23");
    EXPECT_EQ(nxDecimal::FromMantissa(-1234, 2).GetAsString(','), "-12,34");

    Source source;
    for (int i = 0; i < rounds; ++i) {
        const nxDecimal before = source.Next();
        nxDecimal tick = source.Next();
        if (tick < nxDecimalZero) tick = -tick;
        if (tick == nxDecimalZero) continue;
        nxDecimal after = before;
        after.Round(tick, nearest);
        const nxInt128 expected = DivideHalfAway(Scaled(before), Scaled(tick)) * tick.GetMantissa();
        const bool fits = expected <= maxMantissa && expected >= -maxMantissa;
        ASSERT_EQ(after.IsValid(), fits) << before.GetAsString() << " to " << tick.GetAsString();
        if (!fits) continue;
        ASSERT_EQ(after.GetMantissa(), static_cast<long long>(expected));
        ASSERT_EQ(after.GetDecimalPlaces(), tick.GetDecimalPlaces());
    }
}

}  // namespace
