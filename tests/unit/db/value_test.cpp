#include "db/value.h"

#include <gtest/gtest.h>

namespace tarvodb {

TEST(ColumnValue, NullReadsAsTheEmptyTextAndAsZeroButStaysNull) {
    const tSqlite3parent value(static_cast<const char*>(nullptr));
    EXPECT_EQ(value.asString(), "");
    EXPECT_EQ(value.asInt(), 0);
    EXPECT_EQ(value.text(), nullptr);
}

TEST(ColumnValue, NumberIsTheLeadingDecimalDigits) {
    EXPECT_EQ(toInt(nullptr), 0);
    EXPECT_EQ(toInt(""), 0);
    EXPECT_EQ(toInt("abc"), 0);
    EXPECT_EQ(toInt("12abc"), 12);
    EXPECT_EQ(toInt("-7"), -7);
}

TEST(ColumnValue, IntegerIsStoredAsDecimalText) {
    EXPECT_EQ(tSqlite3int(0).asString(), "0");
    EXPECT_EQ(tSqlite3int(-12345678).asString(), "-12345678");
    EXPECT_EQ(tSqlite3int(999999999).asString(), "999999999");
}

TEST(ColumnValue, IntegerHasRoomForNineCharacters) {
    EXPECT_EQ(tSqlite3int(1234567890).asString(), "123456789");
    EXPECT_EQ(tSqlite3int(-123456789).asString(), "-12345678");
}

TEST(ColumnValue, RowIdHasRoomForEveryRowId) {
    EXPECT_EQ(tSqlite3int(2147483647L).asString(), "2147483647");
}

TEST(ColumnValue, NullAndTheEmptyTextReadTheSame) {
    EXPECT_TRUE(tSqlite3parent().readsSameAs(tSqlite3parent("")));
    EXPECT_TRUE(tSqlite3parent("").readsSameAs(tSqlite3parent()));
    EXPECT_FALSE(tSqlite3parent("5").readsSameAs(tSqlite3parent("05")));
}

}  // namespace tarvodb
