#include "db/like.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/environment.h"

namespace tarvodb {

namespace {

// Texts of many kinds; each is a part of a value or of a pattern.
const std::vector<std::string> kPieces = {"a",
                                          "A",
                                          "b",
                                          "z",
                                          "Z",
                                          "@",
                                          "[",
                                          "`",
                                          "{",
                                          "0",
                                          "1",
                                          "9",
                                          "-",
                                          "+",
                                          ".",
                                          "e",
                                          "E",
                                          " ",
                                          "%",
                                          "_",
                                          "%%",
                                          "_%",
                                          "\\",
                                          "*",
                                          "?",
                                          "\x01",
                                          "\x7f",
                                          std::string(1, '\0'),
                                          "\x80",
                                          "\xbf",
                                          "\xc0",
                                          "\xc1\x81",
                                          "\xc3\xb1",
                                          "\xc3\x91",
                                          "\xc3",
                                          "\xe2\x82\xac",
                                          "\xe2\x82",
                                          "\xed\xa0\x80",
                                          "\xef\xbf\xbd",
                                          "\xef\xbf\xbe",
                                          "\xf0\x9f\x93\xba",
                                          "\xf0\x9f\x93",
                                          "\xf8\x88",
                                          "\xff",
                                          "\xfe",
                                          "02:1E:31:0A:00:01",
                                          "02:1e:31:0a:00:02"};

class QuickLike : public testing::Test {
  protected:
    QuickLike() {
        sqlite3_open(":memory:", &db_);
        addQuickLike(db_, "quick_like");
    }
    ~QuickLike() override {
        for (sqlite3_stmt* statement : statements_) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(db_);
    }

    sqlite3_stmt* prepared(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db_);
        statements_.push_back(statement);
        return statement;
    }

    // The first column of the first row as a text, "NULL" for NULL, or the error.
    std::string result(const std::string& sql) {
        sqlite3_stmt* statement = prepared(sql);
        if (sqlite3_step(statement) != SQLITE_ROW) {
            return sqlite3_errmsg(db_);
        }
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        return text == nullptr ? "NULL" : text;
    }

    void expectSameAsSqlite(const std::string& pattern, const std::string& value) {
        EXPECT_EQ(result("SELECT quick_like(" + pattern + ", " + value + ")"),
                  result("SELECT " + value + " LIKE " + pattern))
            << value << " LIKE " << pattern;
    }

    void execute(const std::string& sql) {
        EXPECT_EQ(sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db_);
    }

    sqlite3* db_ = nullptr;

  private:
    std::vector<sqlite3_stmt*> statements_;
};

// Makes values of all types at random.
class Values {
  public:
    explicit Values(unsigned seed) : random_(seed) {}

    void bind(sqlite3_stmt* statement) {
        switch (below(10)) {
            case 0:
                sqlite3_bind_null(statement, 1);
                break;
            case 1:
                sqlite3_bind_double(statement, 1, real());
                break;
            case 2:
                bindBytes(statement, sqlite3_bind_blob);
                break;
            case 3:
            case 4:
            case 5:
                sqlite3_bind_int64(statement, 1, integer());
                break;
            default:
                bindBytes(statement, sqlite3_bind_text);
        }
    }

  private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    template <class Bind>
    void bindBytes(sqlite3_stmt* statement, Bind bindTo) {
        const std::string bytes = text();
        bindTo(statement, 1, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    }

    sqlite3_int64 integer() {
        const auto wide = static_cast<sqlite3_int64>(random_());
        return below(4) == 0 ? wide : wide % 200 - 50;
    }

    double real() {
        const auto wide = static_cast<double>(integer());
        return below(2) == 0 ? wide : wide / 8;
    }

    std::string text() {
        if (below(3) == 0) {
            const std::string number = std::to_string(integer());
            return below(4) == 0 ? "0" + number : below(4) == 0 ? number + ".0" : number;
        }
        std::string text;
        for (unsigned count = below(5); count > 0; --count) {
            text += kPieces[below(static_cast<unsigned>(kPieces.size()))];
        }
        return text;
    }

    std::mt19937_64 random_;
};

}  // namespace

// TARVO_LIKE_PAIRS asks for more pairs, TARVO_LIKE_SEED for others.
TEST_F(QuickLike, IsTheSameForAnyPairOfValues) {
    constexpr unsigned long kValues = 1000;
    const unsigned long pairs = test::fromEnvironment("TARVO_LIKE_PAIRS", 300'000);
    Values values(static_cast<unsigned>(test::fromEnvironment("TARVO_LIKE_SEED", 1)));

    execute("CREATE TABLE value (x); BEGIN");
    sqlite3_stmt* insert = prepared("INSERT INTO value VALUES (?)");
    for (unsigned long i = 0; i < kValues; ++i) {
        values.bind(insert);
        ASSERT_EQ(sqlite3_step(insert), SQLITE_DONE);
        sqlite3_reset(insert);
    }
    sqlite3_stmt* differing = prepared(
        "SELECT typeof(x), quote(x), typeof(?1), quote(?1) FROM value"
        " WHERE quick_like(?1, x) IS NOT (x LIKE ?1)");
    for (unsigned long pattern = 0; pattern < pairs / kValues; ++pattern) {
        values.bind(differing);
        ASSERT_EQ(sqlite3_step(differing), SQLITE_DONE)
            << sqlite3_column_text(differing, 0) << " " << sqlite3_column_text(differing, 1)
            << " LIKE " << sqlite3_column_text(differing, 2) << " "
            << sqlite3_column_text(differing, 3);
        sqlite3_reset(differing);
    }
}

TEST_F(QuickLike, IsTheSameAtTheEdges) {
    const std::vector<std::string> values = {"NULL",
                                             "''",
                                             "'0'",
                                             "'-0'",
                                             "'00'",
                                             "'+1'",
                                             "' 1'",
                                             "'1 '",
                                             "1",
                                             "'1'",
                                             "1.0",
                                             "'1.0'",
                                             "-1",
                                             "'-1'",
                                             "1e3",
                                             "'1000.0'",
                                             "1e300",
                                             "'1.0e+300'",
                                             "9223372036854775807",
                                             "'9223372036854775807'",
                                             "'9223372036854775808'",
                                             "-9223372036854775808",
                                             "'-9223372036854775808'",
                                             "'-9223372036854775809'",
                                             "x''",
                                             "x'31'",
                                             "x'FF'",
                                             "'A'",
                                             "'a'",
                                             "'ABC'",
                                             "'abc'",
                                             "'[bc'",
                                             "'{bc'",
                                             "'%'",
                                             "'_'",
                                             "'a%'",
                                             "'_b_'",
                                             "char(0)",
                                             "'a' || char(0)",
                                             "'a' || char(0) || 'b'",
                                             "'Ñ'",
                                             "'ñ'",
                                             "'K'",
                                             "CAST(x'C3' AS TEXT)",
                                             "CAST(x'61C0' AS TEXT)",
                                             "CAST(x'C181' AS TEXT)",
                                             "hex(zeroblob(32))",
                                             "hex(zeroblob(33))",
                                             "lower(hex(zeroblob(33)))"};
    for (const std::string& pattern : values) {
        for (const std::string& value : values) {
            expectSameAsSqlite(pattern, value);
        }
    }
}

TEST_F(QuickLike, RefusesTheSamePatternsAsTooLong) {
    for (const std::string value : {"'x'", "NULL", "x'31'", "1"}) {
        for (const std::string size : {"50000", "50001"}) {
            const std::string pattern = "printf('%.*c', " + size + ", 'x')";
            expectSameAsSqlite(pattern, value);
            expectSameAsSqlite("CAST(" + pattern + " AS BLOB)", value);
        }
    }
    EXPECT_EQ(result("SELECT quick_like(printf('%.50001c', 'x'), 'x')"),
              "LIKE or GLOB pattern too complex");
    sqlite3_limit(db_, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 3);
    expectSameAsSqlite("'abc'", "'ABC'");
    expectSameAsSqlite("'abcd'", "'ABCD'");
}

TEST_F(QuickLike, TakesANewPatternForEachRow) {
    execute("CREATE TABLE pair (x, y); INSERT INTO pair VALUES (1, 1), (2, 1), ('a', 'A')");
    EXPECT_EQ(result("SELECT group_concat(quick_like(y, x)) FROM pair"), "1,0,1");
}

namespace {

// A database that is quickened beside an equal one whose LIKE is SQLite's own.
class QuickenedConnection : public testing::Test {
  protected:
    ~QuickenedConnection() override { close(); }

    void close() {
        sqlite3_close(quick_);
        sqlite3_close(own_);
    }

    // Both read their schema anew, as from a file.
    void open(const std::string& sql) {
        close();
        for (sqlite3** db : {&quick_, &own_}) {
            sqlite3_open(":memory:", db);
            lines(*db, sql);
            sqlite3_int64 size = 0;
            unsigned char* content = sqlite3_serialize(*db, "main", &size, 0);
            sqlite3_deserialize(*db, "main", content, size, size,
                                SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE);
        }
        quickenLike(quick_);
    }

    // The first column of all rows, or the error.
    static std::string lines(sqlite3* db, const std::string& sql) {
        std::string joined;
        const auto add = [](void* text, int, char** cells, char**) {
            *static_cast<std::string*>(text) += std::string(cells[0]) + " ";
            return 0;
        };
        const int code = sqlite3_exec(db, sql.c_str(), add, &joined, nullptr);
        return code == SQLITE_OK ? joined : sqlite3_errmsg(db);
    }

    void expectSameRows(const std::string& sql) { EXPECT_EQ(lines(quick_, sql), lines(own_, sql)); }

    bool isQuick() {
        return lines(quick_,
                     "SELECT count(*) FROM pragma_function_list"
                     " WHERE name = 'like' AND narg = 2 AND NOT builtin") == "1 ";
    }

    sqlite3* quick_ = nullptr;
    sqlite3* own_ = nullptr;
};

const std::string kRows =
    "CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT, other);"
    "INSERT INTO t VALUES (1, 'ab', 1), (2, 'AA', 2), (3, 'aa', 1), (4, 'AB', 12);";

}  // namespace

TEST_F(QuickenedConnection, GetsTheQuickLikeWithTheFirstStatementThatReadsTheSchema) {
    open(kRows);
    EXPECT_EQ(lines(quick_, "BEGIN TRANSACTION"), "");
    EXPECT_FALSE(isQuick());
    EXPECT_EQ(lines(quick_, "SELECT * FROM t WHERE name LIKE 'aa'"), "2 3 ");
    EXPECT_TRUE(isQuick());
    EXPECT_EQ(lines(quick_, "SELECT * FROM t WHERE name LIKE 'aa'"), "2 3 ");
    EXPECT_EQ(lines(quick_, "SELECT * FROM t WHERE other LIKE '1'"), "1 3 ");
    EXPECT_EQ(lines(quick_, "COMMIT"), "");
}

TEST_F(QuickenedConnection, KeepsTheThreeArgumentLike) {
    open(kRows);
    lines(quick_, "SELECT * FROM t");
    EXPECT_EQ(lines(quick_, "SELECT 'a%' LIKE 'a#%' ESCAPE '#', 1"), "1 ");
    EXPECT_EQ(lines(quick_, "SELECT 'ab' LIKE 'a#%' ESCAPE '#'"), "0 ");
}

TEST_F(QuickenedConnection, GivesTheRowsInTheOrderOfAnIndexThatSqliteSearches) {
    const std::string search = "SELECT * FROM t WHERE name LIKE 'a%'";
    for (const auto& [index, rows] :
         {std::pair{"CREATE INDEX i ON t (name COLLATE NOCASE)", "2 3 1 4 "},
          {"CREATE TABLE u (x); CREATE UNIQUE INDEX i ON"
           " t (name collate \"nocase\", other); CREATE TABLE v (x)",
           "3 2 1 4 "}}) {
        open(kRows + index);
        EXPECT_EQ(lines(own_, search), rows);
        EXPECT_EQ(lines(quick_, search), rows);
        EXPECT_EQ(lines(quick_, search), rows);
        EXPECT_FALSE(isQuick());
    }
}

TEST_F(QuickenedConnection, GivesTheRowsInTheirOwnOrderWhereSqliteSearchesNoIndex) {
    open(kRows + "CREATE INDEX i ON t (name); CREATE INDEX j ON t (other, name, id)");
    for (int i = 0; i < 2; ++i) {
        expectSameRows("SELECT * FROM t WHERE name LIKE 'a%'");
        expectSameRows("SELECT * FROM t WHERE name LIKE 'ab'");
        expectSameRows("SELECT * FROM t WHERE other LIKE '1'");
    }
    EXPECT_TRUE(isQuick());
}

TEST_F(QuickenedConnection, MayHaveLikeInItsSchema) {
    open(kRows +
         "CREATE INDEX i ON t (other) WHERE name LIKE 'a%'; CREATE INDEX j ON t (other LIKE 1);"
         "CREATE TABLE c (x CHECK (x LIKE 'a%'));"
         "CREATE TRIGGER r AFTER INSERT ON c WHEN new.x LIKE 'ab'"
         " BEGIN INSERT INTO t (name) VALUES ('new'); END");
    for (int i = 0; i < 2; ++i) {
        expectSameRows("SELECT * FROM t WHERE name LIKE 'a%' AND other = 1");
        expectSameRows("INSERT INTO c VALUES ('AB')");
        expectSameRows("INSERT INTO c VALUES ('b')");
        expectSameRows("SELECT name FROM t");
        expectSameRows("PRAGMA integrity_check");
    }
    EXPECT_TRUE(isQuick());
}

TEST_F(QuickenedConnection, MayHaveAnIndexThatNoStatementMade) {
    open(kRows + "CREATE TABLE u (x UNIQUE); INSERT INTO u VALUES ('ab'), ('AB'), ('c')");
    for (int i = 0; i < 2; ++i) {
        expectSameRows("SELECT x FROM u WHERE x LIKE 'ab'");
    }
    EXPECT_TRUE(isQuick());
}

TEST_F(QuickenedConnection, StaysAsItIsWithoutASchema) {
    open("");
    EXPECT_EQ(lines(quick_, "SELECT * FROM t"), "no such table: t");
    EXPECT_EQ(lines(quick_, "SELECT 'a' LIKE 'A'"), "1 ");
    EXPECT_FALSE(isQuick());
}

}  // namespace tarvodb
