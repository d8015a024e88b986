#include "db/value.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>

namespace tarvodb {

TEST(ColumnValue, NullReadsAsTheEmptyTextAndAsZeroButStaysNull) {
    const tSqlite3parent value(static_cast<const char*>(nullptr));
    EXPECT_EQ(value.asString(), "");
    EXPECT_STREQ(value.textOrEmpty(), "");
    EXPECT_EQ(value.asInt(), 0);
    EXPECT_EQ(value.text(), nullptr);
}

TEST(ColumnValue, WithoutAValueIsNull) { EXPECT_EQ(tSqlite3parent().text(), nullptr); }

TEST(ColumnValue, CopiesTheTextItIsMadeFrom) {
    std::string text = "Astra";
    const tSqlite3parent value(text.c_str());
    const tSqlite3int number(text.c_str());
    text = "gone!";
    EXPECT_EQ(value.asString(), "Astra");
    EXPECT_EQ(number.asString(), "Astra");
}

TEST(ColumnValue, CopyOutlivesItsSourceAndKeepsNull) {
    auto source = std::make_unique<tSqlite3parent>("Astra");
    const tSqlite3parent copy = *source;
    source.reset();
    EXPECT_EQ(copy.asString(), "Astra");
    EXPECT_EQ(columnValue(tSqlite3parent()).text(), nullptr);
}

TEST(ColumnValue, KeepsQuotesPercentSignsAndBytesAbove127) {
    const char* text = "L'\"Été\" 50% <&>\xff";
    EXPECT_EQ(tSqlite3parent(text).asString(), text);
    EXPECT_STREQ(tSqlite3parent(text).text(), text);
}

TEST(ColumnValue, ReadAsANumberStaysWithin32Bits) {
    EXPECT_EQ(tSqlite3parent("12abc").asInt(), 12);
    EXPECT_EQ(tSqlite3parent("4294967301").asInt(), INT_MAX);
    EXPECT_EQ(tSqlite3parent("-4294967301").asInt(), INT_MIN);
}

TEST(ColumnValue, IntegerIsStoredAsDecimalText) {
    EXPECT_EQ(tSqlite3int(0).asString(), "0");
    EXPECT_EQ(tSqlite3int(-12345678).asString(), "-12345678");
    EXPECT_EQ(tSqlite3int(999999999).asString(), "999999999");
}

TEST(ColumnValue, IntegerOfATextKeepsTheTextAsItIs) {
    EXPECT_EQ(tSqlite3int("05").asString(), "05");
    EXPECT_EQ(tSqlite3int("abc").asString(), "abc");
    EXPECT_EQ(tSqlite3int(static_cast<const char*>(nullptr)).text(), nullptr);
}

TEST(ColumnValue, IntegerHasRoomForNineCharacters) {
    EXPECT_EQ(tSqlite3int(1234567890).asString(), "123456789");
    EXPECT_EQ(tSqlite3int(-123456789).asString(), "-12345678");
}

TEST(ColumnValue, RowIdHasRoomForEveryRowId) {
    EXPECT_EQ(tSqlite3int(2147483647L).asString(), "2147483647");
    EXPECT_EQ(tSqlite3int(long{INT_MIN}).asString(), "-2147483648");
}

TEST(ColumnValue, NullAndTheEmptyTextReadTheSame) {
    EXPECT_TRUE(tSqlite3parent().readsSameAs(tSqlite3parent("")));
    EXPECT_TRUE(tSqlite3parent("").readsSameAs(tSqlite3parent()));
    EXPECT_FALSE(tSqlite3parent("5").readsSameAs(tSqlite3parent("05")));
    EXPECT_FALSE(tSqlite3parent("a").readsSameAs(tSqlite3parent("A")));
    EXPECT_FALSE(tSqlite3parent("0").readsSameAs(tSqlite3parent()));
}

TEST(IntegerValue, IsMadeFromAnotherValueWithItsText) {
    EXPECT_STREQ(tSqlite3int(tSqlite3parent("05")).text(), "05");
    EXPECT_STREQ(tSqlite3int(tSqlite3parent("")).text(), "");
    EXPECT_EQ(tSqlite3int(tSqlite3parent()).text(), nullptr);
    EXPECT_STREQ(tSqlite3int(tSqlite3int(7)).text(), "7");
}

}  // namespace tarvodb
