#include "host/feed/nxCsvCells.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/values/nxDecimal.h"

// Short numbers are read in another way than long ones; both are the numbers of their texts and end with
// them, and what is no number is none.
TEST(nxCsvCells, NumbersAreThoseOfTheirTexts)
{
    std::mt19937 random(11);
    int count = 0;
    for (int step = 0; step < 200'000; ++step) {
        std::string text;
        for (const std::size_t size = 1 + random() % 12; text.size() < size;)
            text += "0123456789..-+ 5"[random() % (random() % 3 == 0 ? 16 : 10)];
        if (random() % 2 == 0) text.insert(random() % text.size(), ".");
        const std::string end = random() % 3 == 0 ? "," : random() % 2 == 0 ? "\n" : "\r\n";
        const std::string cell = text + end + "12345678,1234567";
        nxDecimal wanted;
        wanted.SetFromString(text);
        // A decimal may begin with its point; a number of ours has digits on both sides.
        const char first = text[0] == '-' || text[0] == '+' ? text[1] : text[0];
        const bool isNumber = wanted.IsValid() && first != '.' && text.back() != '.';
        nxDecimal number;
        const char* const found = nxCsvCells::ReadNumber(cell.c_str(), number, nxCsvCells::Commas());
        ASSERT_EQ(found != nullptr, isNumber) << text;
        if (!isNumber) continue;
        ASSERT_EQ(found - cell.c_str(), static_cast<std::ptrdiff_t>(text.size())) << text;
        ASSERT_EQ(number, wanted) << text;
        ++count;
    }
    EXPECT_GT(count, 50'000);
}
