#include "text/to_int.h"

#include <gtest/gtest.h>

namespace text {

TEST(Number, IsTheLeadingDecimalDigits) {
    EXPECT_EQ(toInt("12abc"), 12);
    EXPECT_EQ(toInt("05"), 5);
    EXPECT_EQ(toInt("1.9"), 1);
    EXPECT_EQ(toInt("0x10"), 0);
}

TEST(Number, MayHaveBlanksAndASignBeforeIt) {
    EXPECT_EQ(toInt("-7"), -7);
    EXPECT_EQ(toInt("+7"), 7);
    EXPECT_EQ(toInt(" \t\n-7"), -7);
    EXPECT_EQ(toInt("- 7"), 0);
}

TEST(Number, IsZeroWithoutDigits) {
    EXPECT_EQ(toInt(nullptr), 0);
    EXPECT_EQ(toInt(""), 0);
    EXPECT_EQ(toInt("abc"), 0);
}

TEST(Number, ReachesBothEndsOf32Bits) {
    EXPECT_EQ(toInt("2147483646"), 2147483646);
    EXPECT_EQ(toInt("2147483647"), 2147483647);
    EXPECT_EQ(toInt("-2147483647"), -2147483647);
    EXPECT_EQ(toInt("-2147483648"), -2147483647 - 1);
}

TEST(Number, StaysAtTheEndThatItIsBeyond) {
    EXPECT_EQ(toInt("2147483648"), 2147483647);
    EXPECT_EQ(toInt("4294967295"), 2147483647);
    EXPECT_EQ(toInt("4294967296"), 2147483647);
    EXPECT_EQ(toInt("4294967301"), 2147483647);
    EXPECT_EQ(toInt("-2147483649"), -2147483647 - 1);
    EXPECT_EQ(toInt("-4294967296"), -2147483647 - 1);
}

TEST(Number, StaysAtTheEndThatItIsBeyondWhenLongerThan64Bits) {
    EXPECT_EQ(toInt("9223372036854775807"), 2147483647);
    EXPECT_EQ(toInt("9223372036854775808"), 2147483647);
    EXPECT_EQ(toInt("18446744073709551616"), 2147483647);
    EXPECT_EQ(toInt("99999999999999999999999999999999"), 2147483647);
    EXPECT_EQ(toInt("-9223372036854775808"), -2147483647 - 1);
    EXPECT_EQ(toInt("-9223372036854775809"), -2147483647 - 1);
    EXPECT_EQ(toInt("-99999999999999999999999999999999"), -2147483647 - 1);
}

}  // namespace text
