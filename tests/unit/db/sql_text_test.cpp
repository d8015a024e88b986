#include "db/sql_text.h"

#include <gtest/gtest.h>

namespace tarvodb {

TEST(SqlText, IsQuotedBySqlite) {
    EXPECT_EQ(quoted("it's"), "'it''s'");
    EXPECT_EQ(quoted(""), "''");
    EXPECT_EQ(quoted(nullptr), "NULL");
}

TEST(SqlText, ThatSqliteHadNoMemoryForIsNotAnEmptyStatement) {
    EXPECT_THROW(formatted(nullptr), std::bad_alloc);
}

}  // namespace tarvodb
