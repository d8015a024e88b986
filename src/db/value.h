// Column values. A value is kept as the text that SQLite gave or that the caller set; SQL NULL is
// a value without text and stays apart from the empty text on its way back to SQL.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "text/to_int.h"

namespace tarvodb {

// The value of a text column, and what the values of both kinds of column have in common.
class tSqlite3parent {
  public:
    // SQL NULL.
    tSqlite3parent() = default;
    // Copies `text`; null gives SQL NULL.
    explicit tSqlite3parent(const char* text);
    explicit tSqlite3parent(std::string text) : text_(std::move(text)) {}

    // The text, "" for SQL NULL.
    [[nodiscard]] std::string asString() const { return text_.value_or(std::string()); }

    // The text as SQL sees it: null for SQL NULL. Valid as long as this value is unchanged.
    [[nodiscard]] const char* text() const { return text_ ? text_->c_str() : nullptr; }

    // The text where SQL NULL counts as the empty text. Valid as long as this value is unchanged.
    [[nodiscard]] const char* textOrEmpty() const { return text_ ? text_->c_str() : ""; }

    [[nodiscard]] int asInt() const { return text::toInt(text()); }

    // Compares as asString does, so that SQL NULL and the empty text are the same.
    [[nodiscard]] bool readsSameAs(const tSqlite3parent& other) const;

  private:
    std::optional<std::string> text_;
};

// The value of an integer column. It adds no state: a record may keep it as its base class.
class tSqlite3int : public tSqlite3parent {
  public:
    using tSqlite3parent::tSqlite3parent;

    // The text of another column's value, whatever its kind.
    explicit tSqlite3int(const tSqlite3parent& value) : tSqlite3parent(value) {}

    // Decimal text of a configuration number. The stored form has room for nine characters: a
    // longer number is cut there.
    explicit tSqlite3int(int number);

    // Decimal text of a row id.
    explicit tSqlite3int(long number);
};

// The column value of a text, of a number or of another column.
inline tSqlite3parent columnValue(const char* text) { return tSqlite3parent(text); }
inline tSqlite3parent columnValue(const std::string& text) { return tSqlite3parent(text); }
inline tSqlite3parent columnValue(int number) { return tSqlite3int(number); }
inline tSqlite3parent columnValue(long number) { return tSqlite3int(number); }
inline tSqlite3parent columnValue(const tSqlite3parent& value) { return value; }

}  // namespace tarvodb
