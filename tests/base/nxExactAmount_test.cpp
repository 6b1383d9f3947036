#include "base/values/nxExactAmount.h"

#include <gtest/gtest.h>

namespace {

nxDecimal Number(const char* text)
{
    nxDecimal number;
    static_cast<void>(number.SetFromString(text));
    return number;
}

// price * volume * factor * rate + added.
TEST(nxExactAmount, GivesUpItsLastPlacesAndThenStaysAtTheEndOfItsRange)
{
    struct Row
    {
        const char* name;
        const char* price;
        long long volume;
        const char *factor, *rate, *added, *expected;
    };
    const Row rows[] = {
        {"exact", "61800.12345678", -1'000'000, "0.00000001", "1", "0.000000005", "-618.0012345628"},
        {"half away from zero", "-0.00000000005", 1, "1", "1", "0", "-0.0000000001"},
        {"fewer places where ten do not fit", "90000000000.5", 1, "1", "1", "0.123456789",
         "90000000000.62345679"},
        {"a product of more than 38 digits", "-12345678.1234567891", 100'000, "1.2345678901234567",
         "0.000123456789012345", "0", "-188167625.380803461"},
        {"zeros go first", "1000000000.000000000", 1'000'000'000, "10.00000000000000000",
         "0.000000000000000001", "0.1", "10.1"},
        {"places that a large sum has no room for", "9000000000000000000", 1'000'000'000, "1", "0.000000001",
         "0.000000000000000001", "9000000000000000000"},
        {"below a decimal's range", "-9000000000000000000", 1'000'000'000, "1", "1", "0",
         "-9223372036854775807"},
        {"beyond its own", "9000000000000000000", 9'000'000'000'000'000'000, "-9000000000000000000", "1", "1",
         "-9223372036854775807"},
        {"no rate", "100", 1, "1", "", "0", "0"},
    };
    for (const Row& row : rows) {
        nxExactAmount amount(Number(row.price), row.volume, Number(row.factor));
        amount *= Number(row.rate);
        amount += nxExactAmount(Number(row.added), 1);
        nxDecimal shown = amount.GetAsDecimal();
        shown.Normalise(0);
        EXPECT_EQ(shown.GetAsString(), row.expected) << row.name;
        EXPECT_EQ(amount.IsNegative(), row.expected[0] == '-') << row.name;
        EXPECT_TRUE((amount - amount).IsZero()) << row.name;
    }
}

}  // namespace
