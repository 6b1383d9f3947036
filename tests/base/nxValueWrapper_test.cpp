#include "base/values/nxValueWrapper.h"

#include <gtest/gtest.h>

#include "base/values/nxDoubleValueWrapper.h"
#include "base/values/nxStringValue.h"

namespace {

TEST(nxValueWrapper, MarksAreReservedValues)
{
    EXPECT_EQ(nxVolume().GetValue(), 0xFFFFFFFFu);
    EXPECT_EQ(nxVolume(nxNoChangeInitalizer()).GetValue(), 0xFFFFFFFEu);
    EXPECT_TRUE(nxVolume(0xFFFFFFFDu).IsValid());
    EXPECT_TRUE(nxIntValue().IsNull());
    EXPECT_TRUE(nxIntValue(2147483646).IsNoChange());
    EXPECT_TRUE(nxIntValue(-1).IsValid());
    EXPECT_EQ(nxVolume().GetAsString() + nxVolume().GetAsLogString(), "NULL");
    EXPECT_EQ(nxIntValue(2147483646).GetAsString() + nxIntValue(2147483646).GetAsLogString(), "NO_CHANGE");
}

TEST(nxDoubleValueWrapper, TagConstructorsAreCrossedAndSettersAreNot)
{
    nxDoubleValueWrapper value;
    EXPECT_TRUE(value.IsNull());
    EXPECT_EQ(std::bit_cast<unsigned long long>(value.GetValue()), 0x432FFFFFFFFFFFFEull);
    EXPECT_TRUE(nxDoubleValueWrapper(nxNullInitalizer()).IsNoChange());
    EXPECT_TRUE(nxDoubleValueWrapper(nxNoChangeInitalizer()).IsNull());
    value.SetNoChange();
    EXPECT_EQ(std::bit_cast<unsigned long long>(value.GetValue()), 0x432FFFFFFFFFFFFCull);
    EXPECT_EQ(value.GetStatus(), nxValueStatus_NoChange);
    EXPECT_EQ(value.GetAsString() + value.GetAsLogString(), "NO_CHANGE");
    value.SetNull();
    EXPECT_EQ(value.GetStatus(), nxValueStatus_Null);
    EXPECT_EQ(value.GetAsString() + value.GetAsLogString(), "NULL");
}

TEST(nxDoubleValueWrapper, ComparesWithATolerance)
{
    const struct
    {
        double a, b;
        int order;  // -1 less, 0 equal, 1 greater
    } rows[] = {{5.000000001, 5.0, 0}, {5.00000002, 5.0, 1}, {5.0, 5.00000002, -1}};
    for (const auto& row : rows) {
        const nxDoubleValueWrapper a = row.a;
        EXPECT_EQ(a == row.b, row.order == 0) << row.a;
        EXPECT_EQ(a != row.b, row.order != 0) << row.a;
        EXPECT_EQ(a < row.b, row.order < 0) << row.a;
        EXPECT_EQ(a > row.b, row.order > 0) << row.a;
        EXPECT_EQ(a <= row.b, row.order <= 0) << row.a;
        EXPECT_EQ(a >= row.b, row.order >= 0) << row.a;
    }
}

TEST(nxDoubleValueWrapper, ArithmeticLooksAtNoMark)
{
    const nxDoubleValueWrapper null;
    EXPECT_EQ((null + 1.0).GetValue(), 4503599627370496.0);
}

TEST(nxDoubleValueWrapper, GreaterAndLesserPassOverMarks)
{
    const nxDoubleValueWrapper null;
    EXPECT_EQ(nxDoubleValueWrapper::GetMax(null, 5.0).GetValue(), 5.0);
    EXPECT_EQ(nxDoubleValueWrapper::GetMin(5.0, null).GetValue(), 5.0);
    EXPECT_EQ(nxDoubleValueWrapper::GetMax(5.0, 5.000000001).GetValue(), 5.0);
    EXPECT_EQ(nxDoubleValueWrapper::GetMin(5.000000001, 5.0).GetValue(), 5.000000001);
}

TEST(nxStringValue, AnEmptyTextIsNotANullOne)
{
    nxStringValue value;
    EXPECT_TRUE(value.IsNull());
    value.SetValue("");
    EXPECT_TRUE(value.IsValid());
    EXPECT_NE(value, nxStringValue());
    value.SetNoChange();
    EXPECT_TRUE(value.IsNoChange() && !value.IsNull() && !value.IsValid());
}

}  // namespace
