#include "db/like.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>

namespace tarvodb {

namespace {

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

constexpr bool standsForItself(char c) {
    return static_cast<unsigned char>(c) < 0x80 && c != '%' && c != '_';
}

// The number whose decimal text is exactly `text`.
std::optional<std::int64_t> numberOf(std::string_view text) {
    std::int64_t number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) {
        return std::nullopt;
    }
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    return std::string_view(digits.begin(), end) == text ? std::optional(number) : std::nullopt;
}

// A pattern of ASCII characters that all stand for themselves.
class PlainPattern {
  public:
    // Longer patterns are rare, and compared as SQLite does.
    static constexpr std::size_t kMaxSize = 64;

    explicit PlainPattern(std::string_view pattern)
        : size_(pattern.size()), number_(numberOf(pattern)) {
        std::transform(pattern.begin(), pattern.end(), text_.begin(), lower);
    }

    [[nodiscard]] bool matches(std::int64_t number) const { return number_ == number; }

    // `value` counts up to its first zero byte; there is one behind it.
    [[nodiscard]] bool matches(const char* value, std::size_t size) const {
        if (size < size_ || value[size_] != '\0') {
            return false;
        }
        // From the end: the texts of a column are apt to begin alike.
        for (std::size_t i = size_; i-- > 0;) {
            if (lower(value[i]) != text_[i]) {
                return false;
            }
        }
        return true;
    }

  private:
    std::size_t size_;
    std::optional<std::int64_t> number_;
    std::array<char, kMaxSize> text_{};  // in lower case
};

// A build of SQLite may let a blob be LIKE nothing, also where the other side is NULL.
bool blobsMatchNothing() {
    static const bool matchNothing = sqlite3_compileoption_used("LIKE_DOESNT_MATCH_BLOBS") != 0;
    return matchNothing;
}

// SQLite's text of a value; null for NULL, and when there is no memory for it.
const char* textOf(sqlite3_value* value) {
    return reinterpret_cast<const char*>(sqlite3_value_text(value));
}

void giveResult(sqlite3_context* context, bool matches) {
    sqlite3_result_int(context, matches ? 1 : 0);
}

// The pattern is kept for the further rows of its statement.
void keepIfPlain(sqlite3_context* context, std::string_view pattern) {
    if (pattern.size() > PlainPattern::kMaxSize ||
        !std::all_of(pattern.begin(), pattern.end(), standsForItself)) {
        return;
    }
    // Without memory for it null is kept, which counts as nothing kept.
    sqlite3_set_auxdata(context, 0, new (std::nothrow) PlainPattern(pattern),
                        [](void* kept) { delete static_cast<PlainPattern*>(kept); });
}

// What SQLite's own does, in its order.
void compare(sqlite3_context* context, sqlite3_value* pattern, sqlite3_value* value) {
    if (blobsMatchNothing() &&
        (sqlite3_value_type(pattern) == SQLITE_BLOB || sqlite3_value_type(value) == SQLITE_BLOB)) {
        giveResult(context, false);
        return;
    }
    sqlite3* db = sqlite3_context_db_handle(context);
    if (sqlite3_value_bytes(pattern) > sqlite3_limit(db, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1)) {
        sqlite3_result_error(context, "LIKE or GLOB pattern too complex", -1);
        return;
    }
    const char* patternText = textOf(pattern);
    const char* text = textOf(value);
    if (patternText != nullptr && text != nullptr) {
        giveResult(context, sqlite3_strlike(patternText, text, 0) == 0);
        keepIfPlain(context, patternText);
    }
}

void compareWithPlain(sqlite3_context* context, const PlainPattern& pattern, sqlite3_value* value) {
    const int type = sqlite3_value_type(value);
    if (type == SQLITE_INTEGER) {
        giveResult(context, pattern.matches(sqlite3_value_int64(value)));
    } else if (type == SQLITE_BLOB && blobsMatchNothing()) {
        giveResult(context, false);
    } else if (const char* text = textOf(value)) {
        const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
        giveResult(context, pattern.matches(text, size));
    }
}

void like(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
    if (const void* kept = sqlite3_get_auxdata(context, 0)) {
        compareWithPlain(context, *static_cast<const PlainPattern*>(kept), arguments[1]);
    } else {
        compare(context, arguments[0], arguments[1]);
    }
}

// SQLite reads a schema with a statement of these columns: type, name, tbl_name, rootpage, sql.
constexpr int kSchemaColumns = 5;
constexpr int kSchemaSql = 4;

bool readsSchema(sqlite3_stmt* statement) {
    return sqlite3_column_count(statement) == kSchemaColumns &&
           std::strcmp(sqlite3_column_name(statement, kSchemaSql), "sql") == 0;
}

bool mentionsNocase(sqlite3_stmt* schemaRow) {
    const auto* sql = reinterpret_cast<const char*>(sqlite3_column_text(schemaRow, kSchemaSql));
    return sql != nullptr && sqlite3_strlike("%nocase%", sql, 0) == 0;
}

// Called for each row while the schema is read, and then at the end of the statement that it was
// read for. No statement may be running when a function is replaced.
int watchSchema(unsigned event, void* connection, void* subject, void* /*detail*/) {
    auto* db = static_cast<sqlite3*>(connection);
    auto* statement = static_cast<sqlite3_stmt*>(subject);
    if (event == SQLITE_TRACE_PROFILE) {
        if (addQuickLike(db, "like") == SQLITE_OK) {
            sqlite3_trace_v2(db, 0, nullptr, nullptr);
        }
    } else if (readsSchema(statement)) {
        const bool quicken = !mentionsNocase(statement);
        sqlite3_trace_v2(db, quicken ? SQLITE_TRACE_ROW | SQLITE_TRACE_PROFILE : 0, watchSchema,
                         db);
    }
    return 0;
}

}  // namespace

void quickenLike(sqlite3* db) { sqlite3_trace_v2(db, SQLITE_TRACE_ROW, watchSchema, db); }

int addQuickLike(sqlite3* db, const char* name) {
    return sqlite3_create_function_v2(db, name, 2,
                                      SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                                      nullptr, like, nullptr, nullptr, nullptr);
}

}  // namespace tarvodb
